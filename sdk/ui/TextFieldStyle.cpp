#include "ui/TextFieldStyle.hpp"

#include <memory>
#include <utility>

namespace kivo::ui {
namespace {

using platform::AttributedText;
using platform::TextField;
using platform::View;

double widthOf(const std::shared_ptr<View>& accessory) {
    return accessory ? accessory->frame().size.width : 0;
}

std::shared_ptr<View> padding(const TextField& field, double width) {
    auto view = std::make_shared<View>();
    view->setFrame({.origin = {}, .size = {.width = width, .height = field.frame().size.height}});
    return view;
}

} // namespace

double paddingLeftCustom(const TextField& field) {
    return widthOf(field.leftView());
}

void setPaddingLeftCustom(TextField& field, double width) {
    field.setLeftView(padding(field, width));
}

double paddingRightCustom(const TextField& field) {
    return widthOf(field.rightView());
}

void setPaddingRightCustom(TextField& field, double width) {
    field.setRightView(padding(field, width));
}

std::optional<platform::Color> placeHolderColor(const TextField& field) {
    const auto& placeholder = field.attributedPlaceholder();
    return placeholder ? placeholder->foregroundColor : std::nullopt;
}

void setPlaceHolderColor(TextField& field, const std::optional<platform::Color>& color) {
    if (color) {
        field.setAttributedPlaceholder(AttributedText{.text = field.placeholder(), .foregroundColor = color});
    }
}

double letterSpace(const TextField& field) {
    const auto& text = field.attributedText();
    return text && !text->text.empty() ? text->kern.value_or(0) : 0;
}

void setLetterSpace(TextField& field, double space) {
    auto text = field.attributedText().value_or(AttributedText{.text = field.text()});
    text.kern = space;
    field.setAttributedText(std::move(text));
}

} // namespace kivo::ui
