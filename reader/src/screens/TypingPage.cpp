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
        page_.look().dressCaption(*page_.addText("Or", "Or, where the face of a card has one, only this number:"));
        accessNumber_ = page_.addField("CardAccessNumber", "Card access number");
        accessNumber_->setKeyboardType(platform::KeyboardType::numberPad);
    }
    for (const auto& field : {number_, birth_, expiry_, accessNumber_}) {
        if (field) {
            field->addAction(platform::ControlEvent::editingChanged, [weak = weak_from_this()](const auto& /*sender*/) {
                if (const auto self = weak.lock()) {
                    self->events_.touched();
                }
            });
        }
    }
    fault_ = page_.addText("Fault", {});
    fault_->setTextColor(page_.look().colors().error);
    fault_->setHidden(true);
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
    fault_->setHidden(key.has_value());
    const auto frame = [this](const auto& field, const platform::Color& color) {
        if (field) {
            field->changeLayer([&](platform::Layer& layer) { layer.borderColor = color; });
        }
    };
    for (const auto& each : {number_, birth_, expiry_, accessNumber_}) {
        frame(each, page_.look().colors().border);
    }
    if (key) {
        events_.typed(*key);
        return;
    }
    const auto& [value, sentence] = key.error();
    fault_->setText(page_.look().text(sentence));
    const auto field = value == &TypedValues::documentNumber ? number_
                       : value == &TypedValues::dateOfBirth  ? birth_
                       : value == &TypedValues::dateOfExpiry ? expiry_
                                                             : accessNumber_;
    frame(field, page_.look().colors().error);
    field->becomeFirstResponder();
    fault_->scrollIntoView();
}

} // namespace kivo::reader
