#pragma once

#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>

/// The keyboard, and the padding, placeholder colour and letter spacing of text fields. Lengths in points.
namespace kivo::ui {

/// Ends editing on the screen, which takes the keyboard away.
void removeKey(platform::ViewController& screen);

/// Lets a tap on the screen's background end editing.
void removeKeyOnBackgroundTap(platform::ViewController& screen);

/// Moves a screen up by half the keyboard's height while the keyboard is shown, as long as this object lives.
class KeyboardAvoidance {
public:
    explicit KeyboardAvoidance(platform::ViewController& screen);

    void unsubscribeFromKeyboardNotifications();

private:
    std::shared_ptr<platform::Observation> willShow_;
    std::shared_ptr<platform::Observation> willHide_;
};

/// The width of the empty view at the field's left edge; 0 without such a view.
double paddingLeftCustom(const platform::TextField& field);
void setPaddingLeftCustom(platform::TextField& field, double width);

/// The width at the right edge.
double paddingRightCustom(const platform::TextField& field);
void setPaddingRightCustom(platform::TextField& field, double width);

/// Absent where the placeholder has no colour of its own.
std::optional<platform::Color> placeHolderColor(const platform::TextField& field);
/// An absent colour changes nothing.
void setPlaceHolderColor(platform::TextField& field, const std::optional<platform::Color>& color);

/// 0 for a text without letter spacing.
double letterSpace(const platform::TextField& field);
/// Keeps the other attributes of the field's text.
void setLetterSpace(platform::TextField& field, double space);

} // namespace kivo::ui
