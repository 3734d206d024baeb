#pragma once

#include "services/acquisition/qr/inhouse/LuOTPTextField.hpp"

#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/View.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo {

/// The keyboard that a one-time code is typed on.
enum class KeyboardType { numeric = 0, alphabet = 1, alphaNumeric = 2 };

/// A row of circular fields for a short one-time code, one character each. Storyboards know it by its class name.
///
/// What was typed is kept apart from what the fields show, so that they can show a mask. The fields are made when the
/// view is laid out or first asked for one: set the properties before. Lengths in points.
class LuOTPView final : public platform::View, public platform::TextFieldDelegate {
public:
    int otpTextFieldsCount = 4;
    KeyboardType otpTextFieldInputType = KeyboardType::numeric;
    platform::Font otpTextFieldFont = platform::Font::system(20);
    /// Shows "*" for every character.
    bool otpTextFieldEntrySecureType = false;
    /// Shows a blank for every character, whatever the mask says.
    bool otpFilledEntryDisplay = false;
    bool shouldRequireCursor = true;
    platform::Color cursorColor = platform::Color::systemBlue();
    double otpTextFieldSize = 24;
    double otpTextFieldSeparatorSpace = 15;
    double otpTextFieldBorderWidth = 3;
    double otpTextFieldActiveBorderWidth = 3;
    platform::Color otpTextFieldDefaultBackgroundColor = platform::Color::clear();
    platform::Color otpTextFieldEnteredBackgroundColor = platform::Color::clear();
    platform::Color otpTextFieldDefaultBorderColor = darkBlue;
    platform::Color otpTextFieldActiveBorderColor = darkBlue;
    platform::Color otpTextFieldErrorBorderColor = darkBlue;
    std::optional<platform::Color> otpTextFieldFontColor;

    /// The field being edited; null before the first.
    std::shared_ptr<LuOTPTextField> aciveTextField;
    /// What was typed into each field, in order.
    std::vector<std::string> secureEntryData;
    /// Every field holds a character.
    bool hasEnteredAllOTP = false;

    /// Called with the code when the last missing character is typed.
    std::function<void(std::string)> otpEnteredString;
    /// Called when editing begins and when it ends, also in passing from one field to the next.
    std::function<void(bool)> isEditing;

    /// The field at a position, from 1; null when there is no such position.
    std::shared_ptr<LuOTPTextField> field(int tag);

    /// Gives the focus to the field where typing goes on.
    void getResponder();

    bool textFieldShouldBeginEditing(platform::TextField& field) override;
    void textFieldDidBeginEditing(platform::TextField& field) override;
    void textFieldDidEndEditing(platform::TextField& field) override;
    /// Always refuses: the view writes the fields' texts itself.
    bool shouldChangeCharacters(platform::TextField& field, platform::TextRange range,
                                const std::string& replacement) override;

protected:
    void layoutSubviews() override;

private:
    static constexpr platform::Color darkBlue{.red = 0, .green = 39.0 / 255, .blue = 118.0 / 255};

    std::shared_ptr<LuOTPTextField> makeField(int tag);
    platform::Rect frameOf(int tag) const;
    void characterTyped(LuOTPTextField& field, const std::string& character);
    void deletion(LuOTPTextField& field);
    void clear(LuOTPTextField& field);
    void completionCheck();
    std::string shown(const std::string& character) const;
    void applyBorder(LuOTPTextField& field) const;
};

} // namespace kivo
