#pragma once

#include <kivo/platform/ui/TextField.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo {

/// The row of boxes for the activation code: each box takes one character, and the focus moves to the next box.
///
/// Each box is tagged with its position from 1 on. Main thread.
class CodeBoxes final : public platform::TextFieldDelegate {
public:
    struct Look {
        double borderWidth = 0;
        double cornerRadius = 0;
        std::optional<platform::Color> activeBorderColor;
        std::optional<platform::Color> inactiveBorderColor;
    };

    /// `entered` is called with the code after each change that makes the code complete.
    static std::shared_ptr<CodeBoxes> make(std::vector<std::shared_ptr<platform::TextField>> boxes, const Look& look,
                                           std::function<void(std::string)> entered);

    void setFont(const platform::Font& font);

    /// Empties every box and gives the first one the focus.
    void reset();

    /// Empties every box and takes the keyboard away.
    void clear();

    /// Takes the keyboard away from every box.
    void cancelEditing();

    /// Gives the focus back to the box that had the focus last.
    void focusCurrent();

    /// Moves the focus to the next box after a box has changed, and reports a complete code.
    void textDidChange(platform::TextField& box);

    void textFieldDidBeginEditing(platform::TextField& box) override;
    bool shouldChangeCharacters(platform::TextField& box, platform::TextRange range,
                                const std::string& replacement) override;
    bool keyboardInputShouldDelete(platform::TextField& box) override;

private:
    CodeBoxes(std::vector<std::shared_ptr<platform::TextField>> boxes, const Look& look,
              std::function<void(std::string)> entered);

    std::shared_ptr<platform::TextField> boxWithTag(int tag) const;
    void focus(const std::shared_ptr<platform::TextField>& box);
    void highlight(const platform::TextField* active);
    std::string code() const;

    const std::vector<std::shared_ptr<platform::TextField>> boxes_;
    const Look look_;
    const std::function<void(std::string)> entered_;
    std::shared_ptr<platform::TextField> currentActiveTextField_;
};

} // namespace kivo
