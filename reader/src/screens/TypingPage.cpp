#include "screens/TypingPage.hpp"

#include <initializer_list>
#include <utility>

namespace kivo::reader {

std::shared_ptr<TypingPage> TypingPage::make(const Look& look, ScreenText remark, bool offersAccessNumber,
                                             Events events) {
    auto page = std::make_shared<TypingPage>(look, remark, std::move(events));
    page->addFields(offersAccessNumber);
    return page;
}

TypingPage::TypingPage(const Look& look, ScreenText remark, Events events)
    : page_{look, "type", "Type the values",
            remark.isEmpty() ? ScreenText{"The chip opens with three values, which are printed on the document."}
                             : remark}
    , events_{std::move(events)} {}

void TypingPage::addFields(bool offersAccessNumber) {
    number_ = page_.addField("DocumentNumber", "Document number");
    birth_ = page_.addField("DateOfBirth", "Date of birth (day, month, year)");
    expiry_ = page_.addField("DateOfExpiry", "Date of expiry (day, month, year)");
    if (offersAccessNumber) {
        const auto other = page_.addText("Or", "Or, where the face of a card has one, only this number:");
        page_.look().dressCaption(*other);
        other->setTextAlignment(platform::TextAlignment::natural);
        accessNumber_ = page_.addField("CardAccessNumber", "Card access number");
        accessNumber_->setKeyboardType(platform::KeyboardType::numberPad);
    }
    for (const auto& field : {number_, birth_, expiry_, accessNumber_}) {
        if (field) {
            field->addAction(platform::ControlEvent::editingChanged, [weak = weak_from_this()](const auto& /*sender*/) {
                if (const auto self = weak.lock()) {
                    self->showFault(nullptr, {});
                    self->events_.touched();
                }
            });
        }
    }
    fault_ = page_.label("Fault", {});
    page_.look().dressCaption(*fault_);
    fault_->setTextColor(page_.look().colors().error);
    page_.addButton("Continue", "Continue", Page::Way::on, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->submit();
        }
    });
    if (events_.aim) {
        page_.addButton("Aim", "Use the camera", Page::Way::other, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->events_.aim();
            }
        });
    }
}

void TypingPage::submit() {
    const auto key = keyOf({.documentNumber = number_->text(),
                            .dateOfBirth = birth_->text(),
                            .dateOfExpiry = expiry_->text(),
                            .cardAccessNumber = accessNumber_ ? accessNumber_->text() : ""});
    if (key) {
        showFault(nullptr, {});
        events_.typed(*key);
        return;
    }
    const auto& [value, sentence] = key.error();
    const auto field = value == &TypedValues::documentNumber ? number_
                       : value == &TypedValues::dateOfBirth  ? birth_
                       : value == &TypedValues::dateOfExpiry ? expiry_
                                                             : accessNumber_;
    showFault(field, sentence);
    field->becomeFirstResponder();
    field->superview()->scrollIntoView();
}

void TypingPage::showFault(const std::shared_ptr<platform::TextField>& field, ScreenText sentence) {
    const auto& colors = page_.look().colors();
    for (const auto& each : {number_, birth_, expiry_, accessNumber_}) {
        if (each) {
            each->changeLayer(
                [&](platform::Layer& layer) { layer.borderColor = each == field ? colors.error : colors.border; });
        }
    }
    fault_->setText(page_.look().text(sentence));
    fault_->removeFromSuperview();
    if (field) {
        field->superview()->addSubview(fault_);
    }
}

} // namespace kivo::reader
