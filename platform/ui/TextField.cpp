#include "platform/ui/FirstResponder.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr double margin = 8;

/// The offset in bytes at which the character of that number begins.
std::size_t byteOffset(std::string_view text, std::size_t character) {
    return text::firstCharacters(text, character).value_or(text).size();
}

void replaceSubview(View& parent, std::shared_ptr<View>& slot, std::shared_ptr<View> view) {
    if (slot) {
        slot->removeFromSuperview();
    }
    slot = std::move(view);
    parent.addSubview(slot);
}

double widthOf(const std::shared_ptr<View>& view) {
    return view ? view->frame().size.width : 0;
}

} // namespace

void TextField::setText(std::string text) {
    text_ = std::move(text);
    attributedText_.reset();
    textDidChange();
}

void TextField::setAttributedText(std::optional<AttributedText> text) {
    attributedText_ = std::move(text);
    text_ = attributedText_ ? attributedText_->text : std::string{};
    textDidChange();
}

void TextField::textDidChange() {
    selection_ = {.location = text::characterCount(text_), .length = 0};
    setNeedsLayout();
    noteChange();
}

void TextField::setPlaceholder(std::string placeholder) {
    placeholder_ = std::move(placeholder);
    attributedPlaceholder_.reset();
    setNeedsLayout();
    noteChange();
}

void TextField::setAttributedPlaceholder(std::optional<AttributedText> placeholder) {
    attributedPlaceholder_ = std::move(placeholder);
    placeholder_ = attributedPlaceholder_ ? attributedPlaceholder_->text : std::string{};
    setNeedsLayout();
    noteChange();
}

void TextField::setLeftView(std::shared_ptr<View> view) {
    replaceSubview(*this, leftView_, std::move(view));
}

void TextField::setRightView(std::shared_ptr<View> view) {
    replaceSubview(*this, rightView_, std::move(view));
}

void TextField::layoutSubviews() {
    if (leftView_) {
        leftView_->setFrame({.origin = {}, .size = leftView_->frame().size});
    }
    if (rightView_) {
        const auto size = rightView_->frame().size;
        rightView_->setFrame({.origin = {frame().size.width - size.width, 0}, .size = size});
    }
}

Size TextField::sizeThatFits(double widthLimit) {
    const auto beside = 2 * margin + widthOf(leftView_) + widthOf(rightView_);
    // A long text stays in one line, which scrolls sideways.
    const auto text = measure(shownText().empty() ? " " : shownText(), 1e9);
    return {std::min(text.width + beside, widthLimit), text.height + 2 * margin};
}

std::string TextField::shownText() const {
    return text_.empty() ? placeholder_ : text_;
}

bool TextField::becomeFirstResponder() {
    if (isFirstResponder()) {
        return true;
    }
    const auto self = shared_from_this();
    const FocusChange change;
    if (!canBecomeFirstResponder() || keepsInputFrom(*this)) {
        return false;
    }
    if (const auto delegate = delegate_.lock(); delegate && !delegate->textFieldShouldBeginEditing(*this)) {
        return false;
    }
    if (!View::becomeFirstResponder()) {
        return false;
    }
    noteChange();
    if (const auto delegate = delegate_.lock()) {
        delegate->textFieldDidBeginEditing(*this);
    }
    sendActions(ControlEvent::editingDidBegin);
    return isFirstResponder();
}

bool TextField::resignFirstResponder() {
    if (!isFirstResponder()) {
        return true;
    }
    const auto self = shared_from_this();
    const FocusChange change;
    View::resignFirstResponder();
    noteChange();
    if (const auto delegate = delegate_.lock()) {
        delegate->textFieldDidEndEditing(*this);
    }
    sendActions(ControlEvent::editingDidEnd);
    return true;
}

bool TextField::handleTouch() {
    View::handleTouch();
    becomeFirstResponder();
    return true;
}

bool TextField::takeInput() {
    return isReachable() && becomeFirstResponder();
}

bool TextField::insertText(const std::string& text) {
    const auto self = shared_from_this();
    return takeInput() && replaceCharacters(selection_, text);
}

bool TextField::paste(const std::string& text) {
    const auto line = text::singleLine(text);
    return !line.empty() && insertText(line);
}

bool TextField::deleteBackward() {
    const auto self = shared_from_this();
    if (!takeInput()) {
        return false;
    }
    if (const auto delegate = delegate_.lock(); delegate && !delegate->keyboardInputShouldDelete(*this)) {
        return false;
    }
    auto range = selection_;
    if (range.length == 0 && range.location > 0) {
        range = {.location = range.location - 1, .length = 1};
    }
    return range.length > 0 && replaceCharacters(range, {});
}

bool TextField::replaceCharacters(TextRange range, const std::string& replacement) {
    if (range.length == 0 && replacement.empty()) {
        return false;
    }
    if (const auto delegate = delegate_.lock();
        delegate && !delegate->shouldChangeCharacters(*this, range, replacement)) {
        return false;
    }
    // The delegate may have set another text.
    range = clamped(range);
    const auto begin = byteOffset(text_, range.location);
    const auto end = byteOffset(text_, range.location + range.length);
    text_.replace(begin, end - begin, replacement);
    if (attributedText_) {
        attributedText_->text = text_;
    }
    // Counted anew: an accent typed after its letter becomes part of the letter.
    const auto cursor = text::characterCount(std::string_view{text_}.substr(0, begin + replacement.size()));
    textDidChange();
    setSelection({.location = cursor, .length = 0});
    sendActions(ControlEvent::editingChanged);
    return true;
}

void TextField::setSelection(TextRange selection) {
    selection_ = clamped(selection);
}

TextRange TextField::clamped(TextRange range) const {
    const auto count = text::characterCount(text_);
    const auto location = std::min(range.location, count);
    return {.location = location, .length = std::min(range.length, count - location)};
}

} // namespace kivo::platform
