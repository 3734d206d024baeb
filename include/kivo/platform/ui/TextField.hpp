#pragma once

#include <kivo/platform/ui/AttributedText.hpp>
#include <kivo/platform/ui/Control.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

class TextField;

/// A range of a text, in characters as a person counts them: a flag or a letter with its accents is one character.
struct TextRange {
    /// The first character, and the number of characters.
    std::size_t location = 0;
    std::size_t length = 0;

    bool operator==(const TextRange&) const = default;
};

/// The keyboards that a field can ask for, with the platform's numbers.
enum class KeyboardType { standard = 0, asciiCapable = 1, numberPad = 4, namePhonePad = 6 };

/// Follows the editing of a field and may refuse it. Held weakly by the field.
class KIVO_EXPORT TextFieldDelegate {
public:
    virtual ~TextFieldDelegate() = default;

    /// Whether the field may take the keyboard; true by default.
    virtual bool textFieldShouldBeginEditing(TextField& /*field*/) { return true; }

    /// The field has the keyboard.
    virtual void textFieldDidBeginEditing(TextField& /*field*/) {}

    /// The field has lost the keyboard.
    virtual void textFieldDidEndEditing(TextField& /*field*/) {}

    /// Called before a person's change. The delegate may set the field's text itself and return false.
    virtual bool shouldChangeCharacters(TextField& /*field*/, TextRange /*range*/, const std::string& /*replacement*/) {
        return true;
    }

    /// Called when the delete key is pressed, even in an empty field.
    virtual bool keyboardInputShouldDelete(TextField& /*field*/) { return true; }
};

/// One line of text that a person edits. A person's input, from a real or a simulated keyboard, comes through
/// `insertText`, `deleteBackward` and `paste`.
class KIVO_EXPORT TextField : public Control {
public:
    /// The plain text, or the characters of the attributed text.
    const std::string& text() const { return text_; }

    /// Replaces the text and drops the attributes. The cursor goes to the end; no event is sent.
    void setText(std::string text);

    /// The text with its colour; absent for a plain text.
    const std::optional<AttributedText>& attributedText() const { return attributedText_; }

    /// Replaces the text. An absent text makes the field empty.
    void setAttributedText(std::optional<AttributedText> text);

    /// The text that an empty field shows.
    const std::string& placeholder() const { return placeholder_; }

    void setPlaceholder(std::string placeholder);

    /// The same with a colour, which then counts; absent for a plain text.
    const std::optional<AttributedText>& attributedPlaceholder() const { return attributedPlaceholder_; }

    void setAttributedPlaceholder(std::optional<AttributedText> placeholder);

    /// The delegate; null for none, or when it is gone. The field holds it weakly.
    std::shared_ptr<TextFieldDelegate> delegate() const { return delegate_.lock(); }

    void setDelegate(std::weak_ptr<TextFieldDelegate> delegate) { delegate_ = std::move(delegate); }

    /// The keyboard that the field asks for; the standard one at first.
    KeyboardType keyboardType() const { return keyboardType_; }

    void setKeyboardType(KeyboardType type) { keyboardType_ = type; }

    /// Whether the keyboard may correct what a person types.
    bool isAutocorrected() const { return isAutocorrected_; }

    void setAutocorrected(bool autocorrected) { isAutocorrected_ = autocorrected; }

    /// The view inside the field, left of the text; null for none.
    const std::shared_ptr<View>& leftView() const { return leftView_; }

    void setLeftView(std::shared_ptr<View> view);

    /// The view inside the field, right of the text; null for none.
    const std::shared_ptr<View>& rightView() const { return rightView_; }

    void setRightView(std::shared_ptr<View> view);

    // Editing by a person. Each function returns whether the field took the change. A field that a person cannot reach
    // takes no change.

    /// Typing, or an input method's result: replaces the selection. Begins editing if need be.
    virtual bool insertText(const std::string& text);

    /// The delete key.
    virtual bool deleteBackward();

    /// Pasting: `text::singleLine` of `text`, typed all at once. False when nothing remains of the text.
    bool paste(const std::string& text);

    /// The selected range; an empty range is the cursor. At first the end of the text.
    TextRange selection() const { return selection_; }

    /// Selects `selection`, cut to the text's length.
    void setSelection(TextRange selection);

    bool canBecomeFirstResponder() const override { return isEnabled() && isUserInteractionEnabled(); }

    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::textField; }

    /// The text, or the placeholder of an empty field.
    std::string shownText() const override;

protected:
    bool handleTouch() override;
    void layoutSubviews() override;

private:
    bool takeInput();
    bool replaceCharacters(TextRange range, const std::string& replacement);
    TextRange clamped(TextRange range) const;
    void textDidChange();

    std::string text_;
    std::optional<AttributedText> attributedText_;
    std::string placeholder_;
    std::optional<AttributedText> attributedPlaceholder_;
    std::weak_ptr<TextFieldDelegate> delegate_;
    KeyboardType keyboardType_ = KeyboardType::standard;
    bool isAutocorrected_ = true;
    std::shared_ptr<View> leftView_;
    std::shared_ptr<View> rightView_;
    TextRange selection_;
};

} // namespace kivo::platform
