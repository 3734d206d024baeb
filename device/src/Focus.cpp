// Where the focus goes on the phone.
#include "Controls.hpp"
#include "Drawing.hpp"

#include <kivo/platform/ui/Keyboard.hpp>

#include <algorithm>
#include <ranges>
#include <utility>

namespace kivo::device {

using platform::AccessibilityRole;
using platform::View;

bool Controls::canTakeFocus(const Element& element) const {
    const auto* const widget = widgetOf(*element.view);
    return element.isFocusable && widget != nullptr && widget->focusPolicy() != Qt::NoFocus && widget->isEnabled() &&
           widget->isVisibleTo(&phone_);
}

bool Controls::takeFocus(const Element& element) const {
    if (!canTakeFocus(element)) {
        return false;
    }
    if (auto* const widget = widgetOf(*element.view); !isFocused(*widget)) {
        widget->setFocus(Qt::OtherFocusReason);
    }
    return true;
}

bool Controls::keepsFocus() const {
    return std::ranges::any_of(elements_, [](const Element& each) { return each.role == AccessibilityRole::alert; }) &&
           std::ranges::any_of(elements_, [this](const Element& each) { return canTakeFocus(each); });
}

bool Controls::moveFocus(bool next) {
    std::vector<QWidget*> stops;
    for (const auto& element : elements_) {
        if (canTakeFocus(element)) {
            stops.push_back(widgetOf(*element.view));
        }
    }
    if (!next) {
        std::ranges::reverse(stops);
    }
    const auto now = std::ranges::find_if(stops, [this](const QWidget* each) { return isFocused(*each); });
    const auto then = now == stops.end() ? stops.begin() : std::next(now);
    const bool isEnd = then == stops.end();
    if (stops.empty() || (isEnd && !keepsFocus())) {
        return false;
    }
    (isEnd ? stops.front() : *then)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void Controls::chooseFocus() {
    if (!focusAlert() && !focusRefusedField() && !focusEditedField()) {
        returnFocus();
    }
}

bool Controls::focusAlert() {
    const bool isAlert = keepsFocus();
    const auto isAnswerFocused = [this](const Element& each) {
        return canTakeFocus(each) && isFocused(*widgetOf(*each.view));
    };
    if (isAlert && std::ranges::none_of(elements_, isAnswerFocused)) {
        std::ignore = std::ranges::any_of(elements_, [this](const Element& each) { return takeFocus(each); });
    }
    return isAlert;
}

bool Controls::focusRefusedField() {
    const auto former = std::exchange(refused_, {});
    const Element* first = nullptr;
    for (const auto& element : elements_ | std::views::filter(&Element::isInvalid)) {
        refused_.emplace_back(element.view);
        const bool isNew = std::ranges::none_of(former, [&](const auto& each) { return each.lock() == element.view; });
        if (first == nullptr && isNew) {
            first = &element;
        }
    }
    return first != nullptr && takeFocus(*first);
}

bool Controls::focusEditedField() {
    const auto responder = platform::Keyboard::firstResponder();
    const auto edited = std::ranges::find(elements_, responder, &Element::view);
    if (edited != elements_.end() && takeFocus(*edited)) {
        return true;
    }
    if (dynamic_cast<FieldEdit*>(phone_.window()->focusWidget()) != nullptr) {
        phone_.setFocus();
    }
    return false;
}

void Controls::returnFocus() {
    const auto elementOf = [this](const std::weak_ptr<View>& view) {
        return std::ranges::find(elements_, view.lock(), &Element::view);
    };
    if (isFocused(phone_)) {
        const auto returns = [&](const std::weak_ptr<View>& view) {
            const auto element = elementOf(view);
            return element != elements_.end() && takeFocus(*element);
        };
        std::ignore = std::ranges::any_of(left_ | std::views::reverse, returns);
    }
    if (!isFocused(phone_)) {
        // The person is on this screen; the places on covered screens stay.
        std::erase_if(left_, [&](const auto& view) { return view.expired() || elementOf(view) != elements_.end(); });
    }
}

void Controls::markFocus() {
    const auto focused = std::ranges::find_if(elements_, [this](const Element& each) {
        const auto* const widget = widgetOf(*each.view);
        return widget != nullptr && widget->hasFocus();
    });
    if (focused == elements_.end()) {
        ring_.hide();
        return;
    }
    const auto part = visiblePart(*focused->view);
    ring_.follow(QRectF{part.topLeft() * zoom_, part.size() * zoom_}.toRect(),
                 focused->view->layer().cornerRadius * zoom_);
}

} // namespace kivo::device
