#pragma once

#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>

namespace kivo::ui {

/// Ends editing on the screen, which takes the keyboard away.
void removeKey(platform::ViewController& screen);

/// Has a tap on the screen's background do the same.
void removeKeyOnBackgroundTap(platform::ViewController& screen);

/// Moves a screen up by half the keyboard's height while the keyboard is shown. Ends when it is let go.
class KeyboardAvoidance {
public:
    explicit KeyboardAvoidance(platform::ViewController& screen);

    void unsubscribeFromKeyboardNotifications();

private:
    std::shared_ptr<platform::Observation> willShow_;
    std::shared_ptr<platform::Observation> willHide_;
};

} // namespace kivo::ui
