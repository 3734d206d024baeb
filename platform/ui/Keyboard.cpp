#include "platform/base/Process.hpp"
#include "platform/ui/FirstResponder.hpp"

#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <string>
#include <utility>

namespace kivo::platform {
namespace {

constexpr double keyboardHeight = 291;

struct Focus {
    std::weak_ptr<View> view;
    const View* address = nullptr;
    bool keyboardIsShown = false;
    int changes = 0;
};

Focus& focus() {
    return Process::current().part<Focus>([] { return new Focus; });
}

KeyboardFrame risingFrame(const Window& window) {
    const auto [width, height] = window.frame().size;
    const Size size{width, keyboardHeight};
    return {.begin = Rect{{0, height}, size}, .end = Rect{{0, height - keyboardHeight}, size}};
}

} // namespace

void setFirstResponder(const std::shared_ptr<View>& view) {
    focus().view = view;
    focus().address = view.get();
}

bool wasFirstResponder(const View* view) {
    return focus().address == view;
}

bool keepsInputFrom(View& view) {
    const auto holder = focus().view.lock();
    return holder && holder.get() != &view && holder->isReachable() && !view.isReachable();
}

void updateKeyboard() {
    if (focus().changes > 0) {
        return;
    }
    const auto view = focus().view.lock();
    const auto window = view ? view->window() : nullptr;
    if (std::exchange(focus().keyboardIsShown, window != nullptr) == (window != nullptr)) {
        return;
    }
    Notification notification{.name = std::string{window ? keyboardWillShow : keyboardWillHide}, .object = {}};
    if (window) {
        notification.object = risingFrame(*window);
    }
    NotificationCenter::defaultCenter()->post(notification);
}

FocusChange::FocusChange() {
    ++focus().changes;
}

FocusChange::~FocusChange() {
    --focus().changes;
    updateKeyboard();
}

std::shared_ptr<View> Keyboard::firstResponder() {
    return focus().view.lock();
}

bool Keyboard::isShown() {
    return focus().keyboardIsShown;
}

} // namespace kivo::platform
