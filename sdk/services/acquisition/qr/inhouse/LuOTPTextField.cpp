#include <kivo/LuOTPTextField.hpp>

#include <utility>

namespace kivo {

LuOTPTextField::LuOTPTextField() = default;

LuOTPTextField::~LuOTPTextField() = default;

void LuOTPTextField::setPlaceholderString(std::string placeholder) {
    placeholderString_ = std::move(placeholder);
    setPlaceholder(placeholderString_);
}

bool LuOTPTextField::deleteBackward() {
    const auto self = shared_from_this();
    // A field with text has its delegate asked by the deletion itself.
    const bool wasEmpty = text().empty();
    const bool changed = TextField::deleteBackward();
    // A key cannot reach a field that a person cannot reach.
    const bool hasHeard = isReachable() && isFirstResponder();
    if (const auto listener = delegate(); wasEmpty && hasHeard && listener) {
        listener->shouldChangeCharacters(*this, {.location = 0, .length = 0}, "");
    }
    return changed;
}

void LuOTPTextField::describe(platform::LayoutMembers& members) {
    members.text("placeholderString", [this](std::string text) { setPlaceholderString(std::move(text)); });
    members.color("borderColorOfTextField", members.into(borderColorOfTextField));
    members.number("borderWidthOfTextField", 0, 1000, members.into(borderWidthOfTextField));
}

} // namespace kivo
