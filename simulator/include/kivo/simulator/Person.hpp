#pragma once

#include <kivo/platform/Clock.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <chrono>
#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// Someone in front of the display, who can do there what a person can do and nothing else: hidden, disabled or covered
/// controls are out of reach. Views go by their outlets' names. Main thread only.
///
/// What cannot be done comes back as a sentence that also tells what the screen shows. Every doing runs what is due on
/// the main loop before and after.
class Person {
public:
    using Outcome = std::expected<void, std::string>;

    /// `loop` must be the main queue in force.
    explicit Person(std::shared_ptr<platform::Window> window,
                    std::shared_ptr<platform::RunLoop> loop = platform::RunLoop::main());

    /// The same with a loop on `clock`, which `waitFor` moves on by itself.
    Person(std::shared_ptr<platform::Window> window, std::shared_ptr<platform::RunLoop> loop,
           std::shared_ptr<platform::ManualClock> clock);

    /// Taps the middle of a view, after scrolling it onto the display if need be.
    Outcome tap(std::string_view name);

    /// Taps the field unless it has the keyboard already, then types.
    Outcome type(std::string_view name, std::string_view text);

    /// Types one character after the other into whichever field has the keyboard by then.
    Outcome typeOnKeyboard(std::string_view text);

    /// Into the field that has the keyboard, all at once.
    Outcome paste(std::string_view text);
    Outcome pressDelete(std::size_t times = 1);

    /// Taps the button of that title in the alert on top.
    Outcome chooseInAlert(std::string_view title);

    /// Taps the button of the navigation bar with that title or, for one without, that image.
    Outcome pressBarButton(std::string_view name);

    void setReadingSize(platform::ContentSizeCategory category);

    /// Whether a visible view of the topmost screen has that text in it.
    bool sees(std::string_view text);

    /// What the topmost screen shows, in words.
    std::string screenInWords();

    /// Runs the main loop until `condition` holds, for at most `limit` of the loop's time. Fails when it never does.
    Outcome waitFor(const std::function<bool()>& condition, std::chrono::nanoseconds limit = std::chrono::seconds{10});

private:
    void settle();
    std::shared_ptr<platform::View> find(std::string_view name);
    Outcome tap(const std::shared_ptr<platform::View>& view, const std::string& name);
    std::unexpected<std::string> failure(const std::string& problem);

    std::shared_ptr<platform::Window> window_;
    std::shared_ptr<platform::RunLoop> loop_;
    std::shared_ptr<platform::ManualClock> clock_;
};

} // namespace kivo::simulator
