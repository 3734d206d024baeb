#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kivo::platform {

/// A question over the screen with a few answers, each a button. Present it like any screen.
class KIVO_EXPORT AlertController final : public ViewController {
public:
    /// The look of an action: a plain action, the action that cancels, or an action that destroys something.
    enum class ActionStyle { standard, cancel, destructive };

    /// A button of the alert.
    struct Action {
        /// The button's text and its look.
        std::string title;
        ActionStyle style = ActionStyle::standard;
        /// Called once after the alert has closed, if the person chose this answer.
        std::function<void()> handler{};
    };

    /// An alert without a button.
    AlertController(std::string title, std::string message)
        : title_{std::move(title)}
        , message_{std::move(message)} {}

    /// The alert's title.
    const std::string& title() const { return title_; }

    /// The alert's text.
    const std::string& message() const { return message_; }

    /// Adds a button below the others.
    void addAction(Action action) { actions_.push_back(std::move(action)); }

    /// The buttons from the top.
    const std::vector<Action>& actions() const { return actions_; }

    /// A person's choice: closes the alert and calls the handler. Does nothing after the first choice, and for an index
    /// beyond the answers.
    void choose(std::size_t index);

    /// A person's wish to leave the question, such as the Escape key: chooses the first answer of the style `cancel`
    /// or, without such an answer, the last answer.
    void cancel();

protected:
    /// A box with the texts as labels and a button for each action. The buttons' identifiers are their titles.
    std::shared_ptr<View> loadView() override;

private:
    std::string title_;
    std::string message_;
    std::vector<Action> actions_;
    bool isAnswered_ = false;
};

} // namespace kivo::platform
