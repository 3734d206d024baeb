#include "ui/TextEntry.hpp"

#include <kivo/platform/ui/Keyboard.hpp>

#include <any>
#include <memory>
#include <string>
#include <utility>

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

using platform::AttributedText;
using platform::TextField;
using platform::View;

double widthOf(const std::shared_ptr<View>& accessory) {
    return accessory ? accessory->frame().size.width : 0;
}

std::shared_ptr<View> padding(const TextField& field, double width) {
    auto view = std::make_shared<View>();
    view->setFrame({.origin = {}, .size = {.width = width, .height = field.frame().size.height}});
    return view;
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

double paddingLeftCustom(const TextField& field) {
    return widthOf(field.leftView());
}

void setPaddingLeftCustom(TextField& field, double width) {
    field.setLeftView(padding(field, width));
}

double paddingRightCustom(const TextField& field) {
    return widthOf(field.rightView());
}

void setPaddingRightCustom(TextField& field, double width) {
    field.setRightView(padding(field, width));
}

std::optional<platform::Color> placeHolderColor(const TextField& field) {
    const auto& placeholder = field.attributedPlaceholder();
    return placeholder ? placeholder->foregroundColor : std::nullopt;
}

void setPlaceHolderColor(TextField& field, const std::optional<platform::Color>& color) {
    if (color) {
        field.setAttributedPlaceholder(AttributedText{.text = field.placeholder(), .foregroundColor = color});
    }
}

double letterSpace(const TextField& field) {
    const auto& text = field.attributedText();
    return text && !text->text.empty() ? text->kern.value_or(0) : 0;
}

void setLetterSpace(TextField& field, double space) {
    auto text = field.attributedText().value_or(AttributedText{.text = field.text()});
    text.kern = space;
    field.setAttributedText(std::move(text));
}

} // namespace kivo::ui
