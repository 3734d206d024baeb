#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/simulator/Person.hpp>

#include <ranges>
#include <utility>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using platform::View;

constexpr auto clockStep = 10ms;
constexpr int mostDrains = 100;

std::string inMarks(std::string_view text) {
    return std::string{"\""}.append(text).append("\"");
}

/// Calls `visit` for each visible view of the tree, from the root down.
void eachVisible(const std::shared_ptr<View>& view, const std::function<void(const std::shared_ptr<View>&)>& visit) {
    if (!view || view->isHidden() || view->alpha() == 0) {
        return;
    }
    visit(view);
    const auto subviews = view->subviews();
    for (const auto& subview : subviews) {
        eachVisible(subview, visit);
    }
}

void eachVisible(const platform::Window& window, const std::function<void(const std::shared_ptr<View>&)>& visit) {
    for (const auto& view : window.reachableViews()) {
        eachVisible(view, visit);
    }
}

std::string inWords(View& view) {
    const auto name = view.identifier().empty() ? "" : " " + view.identifier();
    switch (view.accessibilityRole()) {
    case platform::AccessibilityRole::button:
        return "button" + name + " " + inMarks(view.accessibilityLabel()) + (view.isReachable() ? "" : " (disabled)");
    case platform::AccessibilityRole::textField:
        return "field" + name + " " + inMarks(view.shownText());
    default:
        return view.shownText().empty() ? std::string{} : inMarks(view.shownText());
    }
}

platform::Point middleOf(const View& view) {
    const auto frame = view.frameOnScreen();
    return {frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2};
}

std::shared_ptr<platform::TextField> focusedField() {
    return std::dynamic_pointer_cast<platform::TextField>(platform::Keyboard::firstResponder());
}

std::shared_ptr<platform::Button> buttonCalled(const std::shared_ptr<View>& tree, std::string_view name) {
    std::shared_ptr<platform::Button> found;
    eachVisible(tree, [&](const auto& view) {
        const auto button = std::dynamic_pointer_cast<platform::Button>(view);
        if (button && !found &&
            (button->title() == name ||
             (button->title().empty() && button->image() && button->image()->name == name))) {
            found = button;
        }
    });
    return found;
}

} // namespace

Person::Person(std::shared_ptr<platform::Window> window, std::shared_ptr<platform::RunLoop> loop)
    : Person{std::move(window), std::move(loop), nullptr} {}

Person::Person(std::shared_ptr<platform::Window> window, std::shared_ptr<platform::RunLoop> loop,
               std::shared_ptr<platform::ManualClock> clock)
    : window_{std::move(window)}
    , loop_{std::move(loop)}
    , clock_{std::move(clock)} {}

Person::Outcome Person::tap(std::string_view name) {
    settle();
    return tap(find(name), std::string{name});
}

Person::Outcome Person::tap(const std::shared_ptr<View>& view, const std::string& name) {
    if (!view) {
        return failure("There is no " + inMarks(name));
    }
    if (!view->isVisible()) {
        return failure(inMarks(name) + " is hidden");
    }
    window_->layoutIfNeeded();
    view->scrollIntoView();
    const auto hit = window_->hitTest(middleOf(*view));
    if (!hit) {
        return failure(inMarks(name) + " lies outside the display, or cannot be tapped");
    }
    if (!hit->isDescendantOf(*view) && !view->isDescendantOf(*hit)) {
        return failure(inMarks(name) + " is covered by " +
                       (hit->identifier().empty() ? "another view" : inMarks(hit->identifier())));
    }
    if (!hit->touch()) {
        return failure(inMarks(name) + " is disabled, or takes no taps");
    }
    settle();
    return {};
}

Person::Outcome Person::type(std::string_view name, std::string_view text) {
    settle();
    const auto field = find(name);
    if (!field || !field->isFirstResponder()) {
        if (auto tapped = tap(field, std::string{name}); !tapped) {
            return tapped;
        }
    }
    return typeOnKeyboard(text);
}

Person::Outcome Person::typeOnKeyboard(std::string_view text) {
    settle();
    std::string typed;
    for (const auto character : text::characters(text)) {
        const auto field = focusedField();
        if (!field || !field->isReachable()) {
            return failure("No field has the keyboard after typing " + inMarks(typed));
        }
        field->insertText(std::string{character});
        settle();
        typed += character;
    }
    return {};
}

Person::Outcome Person::paste(std::string_view text) {
    settle();
    const auto field = focusedField();
    if (!field || !field->isReachable()) {
        return failure("No field has the keyboard to paste into");
    }
    field->paste(std::string{text});
    settle();
    return {};
}

Person::Outcome Person::pressDelete(std::size_t times) {
    settle();
    for (std::size_t i = 0; i < times; ++i) {
        const auto field = focusedField();
        if (!field || !field->isReachable()) {
            return failure("No field has the keyboard to delete in");
        }
        field->deleteBackward();
        settle();
    }
    return {};
}

Person::Outcome Person::chooseInAlert(std::string_view title) {
    settle();
    const auto alert = std::dynamic_pointer_cast<platform::AlertController>(window_->visibleViewController());
    if (!alert) {
        return failure("There is no alert");
    }
    return tap(buttonCalled(alert->view(), title), std::string{title});
}

Person::Outcome Person::pressBarButton(std::string_view name) {
    settle();
    return tap(buttonCalled(find("navigationBar"), name), std::string{name});
}

void Person::setReadingSize(platform::ContentSizeCategory category) {
    window_->setPreferredContentSizeCategory(category);
    settle();
}

bool Person::sees(std::string_view text) {
    settle();
    bool found = false;
    eachVisible(*window_, [&](const auto& view) { found = found || view->shownText().contains(text); });
    return found;
}

std::string Person::screenInWords() {
    std::string words;
    eachVisible(*window_, [&](const auto& view) {
        if (const auto one = inWords(*view); !one.empty()) {
            words += (words.empty() ? "" : ", ") + one;
        }
    });
    return words.empty() ? "nothing" : words;
}

Person::Outcome Person::waitFor(const std::function<bool()>& condition, std::chrono::nanoseconds limit) {
    if (!clock_) {
        return loop_->runUntil(condition, limit) ? Outcome{} : failure("What was waited for did not happen");
    }
    const auto end = clock_->now() + limit;
    for (settle(); !condition(); settle()) {
        if (clock_->now() >= end) {
            return failure("What was waited for did not happen");
        }
        clock_->advance(clockStep);
    }
    return {};
}

void Person::settle() {
    // Bounded: a screen may keep the loop busy for ever.
    for (int i = 0; i < mostDrains && loop_->drain() > 0; ++i) {
    }
}

std::shared_ptr<View> Person::find(std::string_view name) {
    for (const auto& view : window_->reachableViews() | std::views::reverse) {
        if (auto found = view->find(name)) {
            return found;
        }
    }
    return nullptr;
}

std::unexpected<std::string> Person::failure(const std::string& problem) {
    return std::unexpected{problem + "; the screen shows: " + screenInWords() + "."};
}

} // namespace kivo::simulator
