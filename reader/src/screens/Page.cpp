#include "screens/Page.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>

#include <utility>

namespace kivo::reader {

Page::Page(Look look, std::string name, std::string_view title, std::string_view message)
    : look_{std::move(look)}
    , name_{std::move(name)} {
    constexpr double sideMargin = 24;
    column_->setSpacing(12);
    column_->setMargins({.top = 8, .left = 0, .bottom = sideMargin, .right = 0});
    column_->setPlacement({.top = 0, .left = sideMargin, .right = sideMargin});
    title_ = addText("Title", title);
    look_.dressTitle(*title_);
    title_->setTextAlignment(platform::TextAlignment::center);
    message_ = addText("Message", message);
    message_->setTextAlignment(platform::TextAlignment::center);
}

std::shared_ptr<platform::Label> Page::addText(std::string_view identifier, std::string_view key) {
    return addValue(identifier, key.empty() ? std::string{} : look_.text(key));
}

std::shared_ptr<platform::Label> Page::addValue(std::string_view identifier, std::string text) {
    auto label = std::make_shared<platform::Label>();
    label->setIdentifier(name_ + std::string{identifier});
    look_.dressText(*label);
    label->setShrinksToWords(true);
    label->setText(std::move(text));
    add(label);
    return label;
}

std::shared_ptr<platform::TextField> Page::addField(std::string_view identifier, std::string_view label) {
    addText(std::string{identifier} + "Label", label);
    auto field = std::make_shared<platform::TextField>();
    field->setIdentifier(name_ + std::string{identifier});
    field->setAccessibilityLabel(look_.text(label));
    // A value of ten characters fits into the field of a narrow display.
    field->setMaximumContentSizeCategory(platform::ContentSizeCategory::accessibilityLarge);
    field->setAutocorrected(false);
    field->setKeyboardType(platform::KeyboardType::asciiCapable);
    look_.dressText(*field);
    field->setPlacement({.minimumHeight = 44});
    field->changeLayer([](platform::Layer& layer) {
        layer.cornerRadius = 6;
        layer.borderWidth = 1;
        layer.borderColor = platform::Color::white(0.45);
    });
    add(field);
    return field;
}

void Page::addButton(std::string_view identifier, std::string_view title, std::function<void()> action) {
    const bool isFirst = !std::exchange(hasButton_, true);
    if (!isFirst) {
        // Room for a finger on a button of which the display's edge leaves a strip.
        const auto room = std::make_shared<platform::View>();
        room->setPlacement({.height = 0});
        add(room);
    }
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(name_ + std::string{identifier});
    button->setTitle(look_.text(title));
    look_.dressButton(*button, /*standsOut=*/isFirst);
    button->addAction(platform::ControlEvent::touchUpInside, [action = std::move(action)](const auto&) {
        // The action may replace the page, and with it the button.
        const auto kept = action;
        kept();
    });
    add(button);
}

void Page::addWheel() {
    const auto wheel = std::make_shared<platform::ActivityIndicatorView>(platform::ActivityIndicatorView::Style::large);
    wheel->setIdentifier(name_ + "Wheel");
    wheel->setAccessibilityLabel(title_->text());
    wheel->setPlacement({.top = 0, .centerX = 0});
    wheel->startAnimating();
    const auto row = std::make_shared<platform::View>();
    row->addSubview(wheel);
    add(row);
}

} // namespace kivo::reader
