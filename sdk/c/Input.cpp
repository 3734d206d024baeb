#include "c/Display.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <cmath>
#include <memory>
#include <ranges>
#include <string>

namespace {

using namespace kivo;
using platform::TextField;
using platform::View;
using platform::Window;

std::shared_ptr<View> viewOf(const Window& window, std::string_view outlet) {
    const auto reachable = window.reachableViews();
    for (const auto& view : reachable | std::views::reverse) {
        if (auto found = view->find(outlet)) {
            return found;
        }
    }
    return nullptr;
}

/// A tap through the window, so that what covers the view is in the way.
bool tap(Window& window, View& view) {
    if (!view.isVisible()) {
        return false;
    }
    window.layoutIfNeeded();
    view.scrollIntoView();
    const auto frame = view.frameOnScreen();
    const auto hit = window.hitTest({frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2});
    return hit && (hit->isDescendantOf(view) || view.isDescendantOf(*hit)) && hit->touch();
}

/// The field of this window that has the keyboard; null without one, or where a person cannot reach it.
std::shared_ptr<TextField> fieldWithKeyboard(const Window& window) {
    auto field = std::dynamic_pointer_cast<TextField>(platform::Keyboard::firstResponder());
    return field && field->window().get() == &window && field->isReachable() ? field : nullptr;
}

/// Gives the keyboard to the field of that outlet.
bool focus(Window& window, std::string_view outlet) {
    if (outlet.empty()) {
        return true;
    }
    const auto view = viewOf(window, outlet);
    return view && (view->isFirstResponder() || tap(window, *view));
}

/// Runs `input` with the field of that outlet, or with the field that has the keyboard.
template <class Input>
bool withField(const char* function, kivo_display* display, kivo_text outlet, Input input) noexcept {
    return c::resultOf(function, false, [&] {
        auto& window = *c::displayOf(display).window;
        if (!focus(window, c::viewOf(outlet, "outlet"))) {
            return false;
        }
        const auto field = fieldWithKeyboard(window);
        return field && input(window, *field);
    });
}

} // namespace

extern "C" {

bool kivo_display_touch(kivo_display* display, double x, double y) {
    return c::resultOf(__func__, false, [&] {
        auto& window = *c::displayOf(display).window;
        window.layoutIfNeeded();
        const auto hit = window.hitTest({x, y});
        return hit && hit->touch();
    });
}

bool kivo_display_tap(kivo_display* display, kivo_text outlet) {
    return c::resultOf(__func__, false, [&] {
        auto& window = *c::displayOf(display).window;
        const auto view = viewOf(window, c::viewOf(outlet, "outlet"));
        return view && tap(window, *view);
    });
}

bool kivo_display_type(kivo_display* display, kivo_text outlet, kivo_text text) {
    return withField(__func__, display, outlet, [&](const Window& window, TextField&) {
        const auto typed = c::viewOf(text, "text");
        for (const auto character : text::characters(typed)) {
            const auto field = fieldWithKeyboard(window);
            if (!field) {
                return false;
            }
            field->insertText(std::string{character}); // a screen may put the character elsewhere, or refuse it
        }
        return true;
    });
}

bool kivo_display_paste(kivo_display* display, kivo_text outlet, kivo_text text) {
    return withField(__func__, display, outlet, [&](const Window&, TextField& field) {
        field.paste(c::stringOf(text, "text"));
        return true;
    });
}

bool kivo_display_delete_backward(kivo_display* display) {
    return withField(__func__, display, {}, [](const Window&, TextField& field) {
        field.deleteBackward();
        return true;
    });
}

bool kivo_display_scroll(kivo_display* display, kivo_text outlet, double offset) {
    return c::resultOf(__func__, false, [&] {
        auto& window = *c::displayOf(display).window;
        const auto scrolled =
            std::dynamic_pointer_cast<platform::ScrollView>(viewOf(window, c::viewOf(outlet, "outlet")));
        if (!std::isfinite(offset)) {
            throw c::Misuse{"offset is no finite number"};
        }
        if (!scrolled || !scrolled->isReachable()) {
            return false;
        }
        window.layoutIfNeeded();
        scrolled->setContentOffset(offset);
        return true;
    });
}
}
