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

/// A person in front of the display. The person reaches what a real person reaches: no hidden, disabled or covered
/// control. Views are named by their outlets. Main thread only.
///
/// The error of an action is a sentence that also tells what the screen shows. Before and after every action the main
/// loop runs its due blocks.
class Person {
public:
    /// Success, or a sentence about why the person could not do it.
    using Outcome = std::expected<void, std::string>;

    /// `loop` must be the installed main queue.
    explicit Person(std::shared_ptr<platform::Window> window,
                    std::shared_ptr<platform::RunLoop> loop = platform::RunLoop::main());

    /// The same with a loop on `clock`. `waitFor` advances the clock.
    Person(std::shared_ptr<platform::Window> window, std::shared_ptr<platform::RunLoop> loop,
           std::shared_ptr<platform::ManualClock> clock);

    /// Taps the middle of a view, after scrolling it onto the display if need be.
    Outcome tap(std::string_view name);

    /// Taps the field unless it has the keyboard already, then types.
    Outcome type(std::string_view name, std::string_view text);

    /// Types one character after the other, each into the field that has the keyboard at that moment.
    Outcome typeOnKeyboard(std::string_view text);

    /// Pastes the text into the field that has the keyboard, all at once.
    Outcome paste(std::string_view text);
    Outcome pressDelete(std::size_t times = 1);

    /// Taps the button with that title in the topmost alert.
    Outcome chooseInAlert(std::string_view title);

    /// Taps the navigation bar's button with that title or, where a button has no title, with that image.
    Outcome pressBarButton(std::string_view name);

    /// Chooses the reading size in the settings of the device.
    void setReadingSize(platform::ContentSizeCategory category);

    /// Whether a visible view of the topmost screen has that text in it.
    bool sees(std::string_view text);

    /// What the topmost screen shows, in words.
    std::string screenInWords();

    /// Runs the main loop until `condition` holds, for at most `limit` of the loop's time. The outcome is an error when
    /// `condition` does not hold by then.
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
