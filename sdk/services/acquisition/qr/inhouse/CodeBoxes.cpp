#include "services/acquisition/qr/inhouse/CodeBoxes.hpp"

#include "services/acquisition/qr/inhouse/ActivationCode.hpp"

#include <algorithm>
#include <utility>

namespace kivo {

using platform::TextField;
using platform::TextRange;

std::shared_ptr<CodeBoxes> CodeBoxes::make(std::vector<std::shared_ptr<TextField>> boxes, const Look& look,
                                           std::function<void(std::string)> entered) {
    const std::shared_ptr<CodeBoxes> row{new CodeBoxes{std::move(boxes), look, std::move(entered)}};
    for (const auto& box : row->boxes_) {
        box->setDelegate(row);
    }
    row->focus(row->boxWithTag(1));
    return row;
}

CodeBoxes::CodeBoxes(std::vector<std::shared_ptr<TextField>> boxes, const Look& look,
                     std::function<void(std::string)> entered)
    : boxes_{std::move(boxes)}
    , look_{look}
    , entered_{std::move(entered)} {}

void CodeBoxes::setFont(const platform::Font& font) {
    for (const auto& box : boxes_) {
        box->setFont(font);
    }
}

void CodeBoxes::reset() {
    for (const auto& box : boxes_) {
        box->setText("");
    }
    focus(boxWithTag(1));
}

void CodeBoxes::clear() {
    for (const auto& box : boxes_) {
        box->setText("");
        box->resignFirstResponder();
    }
}

void CodeBoxes::focusCurrent() {
    if (currentActiveTextField_) {
        currentActiveTextField_->becomeFirstResponder();
    }
}

void CodeBoxes::textDidChange(TextField& box) {
    if (box.text().empty() || boxWithTag(box.tag()).get() != &box) {
        return;
    }
    if (const auto next = boxWithTag(box.tag() + 1)) {
        focus(next);
    } else {
        box.resignFirstResponder();
        highlight(nullptr);
    }
    if (auto complete = code(); isCompleteActivationCode(complete)) {
        highlight(nullptr);
        cancelEditing();
        entered_(std::move(complete));
    }
}

void CodeBoxes::textFieldDidBeginEditing(TextField& box) {
    currentActiveTextField_ = boxWithTag(box.tag());
    highlight(&box);
}

bool CodeBoxes::shouldChangeCharacters(TextField& box, TextRange /*range*/, const std::string& replacement) {
    if (!replacement.empty()) {
        // A box holds the last character typed.
        box.setText("");
    }
    return true;
}

bool CodeBoxes::keyboardInputShouldDelete(TextField& box) {
    if (const auto previous = boxWithTag(box.tag() - 1); previous && box.text().empty()) {
        previous->setText("");
        focus(previous);
    }
    return true;
}

std::shared_ptr<TextField> CodeBoxes::boxWithTag(int tag) const {
    const auto box = std::ranges::find(boxes_, tag, [](const auto& each) { return each->tag(); });
    return box == boxes_.end() ? nullptr : *box;
}

void CodeBoxes::focus(const std::shared_ptr<TextField>& box) {
    if (box) {
        currentActiveTextField_ = box;
        highlight(box.get());
        box->becomeFirstResponder();
    }
}

/// Highlights one box; null highlights none.
void CodeBoxes::highlight(const TextField* active) {
    for (const auto& box : boxes_) {
        box->changeLayer([&](platform::Layer& layer) {
            layer.borderColor = box.get() == active ? look_.activeBorderColor : look_.inactiveBorderColor;
            layer.borderWidth = look_.borderWidth;
            layer.cornerRadius = look_.cornerRadius;
            layer.masksToBounds = look_.cornerRadius > 0;
        });
    }
}

void CodeBoxes::cancelEditing() {
    for (const auto& box : boxes_) {
        box->resignFirstResponder();
    }
}

std::string CodeBoxes::code() const {
    std::string code;
    for (const auto& box : boxes_) {
        code += box->text();
    }
    return code;
}

} // namespace kivo
