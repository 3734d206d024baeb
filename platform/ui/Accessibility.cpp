#include <kivo/platform/ui/Accessibility.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace kivo::platform {
namespace {

using Role = AccessibilityRole;
using Views = std::vector<std::shared_ptr<View>>;
using Elements = std::vector<AccessibilityElement>;

bool isTold(const View& view) {
    return !view.isHidden() && view.alpha() > 0 && !view.accessibility().isHidden;
}

double middleOf(double begin, double length) {
    return begin + length / 2;
}

double middleHeight(const std::shared_ptr<View>& view) {
    return middleOf(view->frame().top(), view->frame().size.height);
}

/// Whether two views stand beside each other, and not one below the other.
bool isInOneRow(const Rect& first, const Rect& second) {
    const auto shared = std::min(first.bottom(), second.bottom()) - std::max(first.top(), second.top());
    return shared > std::min(first.size.height, second.size.height) / 2;
}

/// The views in the order of reading, `direction` being 1 for lines from the left and -1 for lines from the right. Of a
/// modal view and its siblings only the modal view is left.
Views inReadingOrder(const Views& siblings, double direction) {
    Views views;
    std::ranges::copy_if(siblings, std::back_inserter(views), [](const auto& each) { return isTold(*each); });
    const auto topDown = views | std::views::reverse;
    const auto modal = std::ranges::find_if(topDown, [](const auto& each) { return each->accessibility().isModal; });
    if (modal != topDown.end()) {
        return {*modal};
    }
    // By the middles: the bar over a screen, which begins where the screen begins, comes first.
    std::ranges::stable_sort(views, {}, middleHeight);
    for (auto row = views.begin(); row != views.end();) {
        const auto frame = (*row)->frame();
        const auto end = std::find_if(std::next(row), views.end(),
                                      [&](const auto& each) { return !isInOneRow(frame, each->frame()); });
        std::ranges::stable_sort(row, end, {}, [&](const auto& each) {
            return direction * middleOf(each->frame().left(), each->frame().size.width);
        });
        row = end;
    }
    return views;
}

double directionOf(const View& view) {
    return view.layoutDirection() == LayoutDirection::rightToLeft ? -1 : 1;
}

Role roleOf(const View& view) {
    const auto role = view.accessibilityRole();
    const auto* const wheel = dynamic_cast<const ActivityIndicatorView*>(&view);
    if (wheel != nullptr && !wheel->isAnimating()) {
        return Role::none;
    }
    return role == Role::none && !view.accessibility().label.empty() ? Role::image : role;
}

/// The texts of an alert, which are its name.
std::string textsOf(const View& alert) {
    std::string texts;
    for (const auto& view : alert.subviews()) {
        if (isTold(*view) && view->accessibilityRole() == Role::text && !view->shownText().empty()) {
            texts += (texts.empty() ? "" : ". ") + view->shownText();
        }
    }
    return texts;
}

std::string nameOf(const View& view, Role role) {
    if (const auto& label = view.accessibility().label; !label.empty()) {
        return label;
    }
    if (const auto* const field = dynamic_cast<const TextField*>(&view)) {
        return field->placeholder();
    }
    switch (role) {
    case Role::progress:
        return localizedText("Please wait a moment.");
    case Role::alert:
        return textsOf(view);
    default:
        return view.shownText();
    }
}

AccessibilityElement elementOf(const std::shared_ptr<View>& view, Role role) {
    const auto& properties = view->accessibility();
    const auto* const field = dynamic_cast<const TextField*>(view.get());
    const bool isControl = role == Role::button || role == Role::textField;
    const bool isReachable = isControl && view->isReachable();
    return {.view = view,
            .role = role,
            .name = nameOf(*view, role),
            .value = field != nullptr ? field->text() : std::string{},
            .hint = properties.hint,
            .isFocusable = isReachable,
            .isDisabled = isControl && !isReachable,
            .isFocused = isControl && view->isFirstResponder(),
            .isBusy = role == Role::progress,
            .isInvalid = properties.isInvalid,
            .isRequired = properties.isRequired,
            .isModal = properties.isModal || role == Role::alert};
}

bool isText(Role role) {
    return role == Role::text || role == Role::heading || role == Role::status;
}

void collect(const std::shared_ptr<View>& view, bool isInAlert, Elements& found) {
    const auto role = roleOf(*view);
    if (role != Role::none) {
        auto element = elementOf(view, role);
        // A control without a name is told, so that somebody notices the fault.
        const bool isNeeded =
            role == Role::button || role == Role::textField || role == Role::alert || !element.name.empty();
        if (isNeeded && !(isInAlert && isText(role))) {
            found.push_back(std::move(element));
        }
    }
    for (const auto& subview : inReadingOrder(view->subviews(), directionOf(*view))) {
        collect(subview, isInAlert || role == Role::alert, found);
    }
}

/// The title of the screen on top or, without a title, its first heading.
std::string titleOf(const Window& window, const Elements& elements) {
    const auto screen = window.visibleViewController();
    if (screen && !screen->navigationItem()->title().empty()) {
        return screen->navigationItem()->title();
    }
    const auto found = std::ranges::find(elements, Role::heading, &AccessibilityElement::role);
    return found == elements.end() ? std::string{} : found->name;
}

} // namespace

std::vector<AccessibilityElement> accessibilityElements(Window& window) {
    window.layoutIfNeeded();
    Elements found;
    for (const auto& view : inReadingOrder(window.reachableViews(), directionOf(window))) {
        collect(view, /*isInAlert=*/false, found);
    }
    return found;
}

std::vector<std::string> AccessibilityAnnouncements::next(const Window& window, const Elements& elements) {
    std::vector<std::string> texts;
    const auto screen = window.visibleViewController();
    const bool isUnderAlert = std::ranges::find(elements, Role::alert, &AccessibilityElement::role) != elements.end();
    if (!isUnderAlert && std::exchange(screen_, screen).lock() != screen) {
        texts.push_back(titleOf(window, elements));
    }
    const auto former = std::exchange(told_, {});
    for (const auto& element : elements) {
        if (element.role != Role::status && element.role != Role::progress) {
            continue;
        }
        const bool isKnown = std::ranges::any_of(
            former, [&](const Told& told) { return told.view.lock() == element.view && told.text == element.name; });
        told_.push_back({element.view, element.name});
        if (!isKnown) {
            texts.push_back(element.name);
        }
    }
    std::erase(texts, std::string{});
    return texts;
}

} // namespace kivo::platform
