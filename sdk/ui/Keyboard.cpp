#include "ui/Keyboard.hpp"

#include <kivo/platform/ui/Keyboard.hpp>

#include <any>
#include <string>

namespace kivo::ui {
namespace {

using platform::Notification;
using platform::ViewController;

void moveTo(ViewController& screen, double y) {
    auto frame = screen.view()->frame();
    frame.origin.y = y;
    screen.view()->setFrame(frame);
}

void keyboardWillShow(ViewController& screen, const Notification& notification) {
    const auto* keyboard = std::any_cast<platform::KeyboardFrame>(&notification.object);
    if (keyboard != nullptr && keyboard->begin && screen.view()->frame().origin.y == 0) {
        moveTo(screen, -0.5 * keyboard->begin->size.height);
    }
    screen.setNeedsStatusBarAppearanceUpdate();
}

void keyboardWillHide(ViewController& screen, const Notification& /*notification*/) {
    if (screen.view()->frame().origin.y != 0) {
        moveTo(screen, 0);
    }
    screen.setNeedsStatusBarAppearanceUpdate();
}

std::shared_ptr<platform::Observation> observe(std::string_view name, ViewController& screen,
                                               void (*react)(ViewController&, const Notification&)) {
    return platform::NotificationCenter::defaultCenter()->addObserver(
        std::string{name}, [react, weak = screen.weak_from_this()](const Notification& notification) {
            if (const auto self = weak.lock()) {
                react(*self, notification);
            }
        });
}

} // namespace

void removeKey(ViewController& screen) {
    screen.view()->endEditing();
}

void removeKeyOnBackgroundTap(ViewController& screen) {
    screen.view()->addTapAction([weak = screen.weak_from_this()] {
        if (const auto self = weak.lock()) {
            removeKey(*self);
        }
    });
}

KeyboardAvoidance::KeyboardAvoidance(ViewController& screen)
    : willShow_{observe(platform::keyboardWillShow, screen, keyboardWillShow)}
    , willHide_{observe(platform::keyboardWillHide, screen, keyboardWillHide)} {}

void KeyboardAvoidance::unsubscribeFromKeyboardNotifications() {
    willShow_.reset();
    willHide_.reset();
}

} // namespace kivo::ui
