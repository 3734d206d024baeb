#pragma once

#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {
class Label;
}

namespace kivo::simulator {

/// What the reading screen looks like.
struct ReadingLook {
    std::optional<platform::Font> titleFont;
    std::optional<platform::Font> textFont;
    std::optional<platform::Font> buttonFont;
    double buttonHeight = 50;
    double buttonCornerRadius = 0;
};

/// The simulated vendor's screen: a title, a line that says what goes on, and a button for everything that a person may
/// choose.
class ReadingScreen final : public platform::ViewController {
public:
    struct Choice {
        /// The button's identifier.
        std::string name;
        std::string label;
    };

    ReadingScreen(std::string title, ReadingLook look, std::function<void(std::size_t)> chosen);

    /// Says what the person can do, with a button for each choice. The first one chosen counts.
    void ask(const std::string& text, const std::vector<Choice>& choices);

    /// Says what goes on, without buttons.
    void tell(const std::string& text);

    /// Runs once the screen has been taken away, by whomever.
    std::function<void()> gone;

    void viewDidDisappear(bool animated) override;

protected:
    std::shared_ptr<platform::View> loadView() override;

private:
    void addLabel(const std::shared_ptr<platform::Label>& label, const char* name,
                  const std::optional<platform::Font>& font);

    const ReadingLook look_;
    const std::function<void(std::size_t)> chosen_;
    std::shared_ptr<platform::Label> title_;
    std::shared_ptr<platform::Label> text_;
    std::shared_ptr<platform::StackView> column_;
    std::shared_ptr<platform::StackView> buttons_;
};

} // namespace kivo::simulator
