#include "services/acquisition/qr/inhouse/LuOTPView.hpp"

#include "Models/Characters.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <cstddef>
#include <string_view>
#include <utility>

namespace kivo {
namespace {

using platform::Color;
using platform::TextField;
using platform::TextRange;

platform::KeyboardType platformKeyboard(KeyboardType type) {
    switch (type) {
    case KeyboardType::alphabet:
        return platform::KeyboardType::asciiCapable;
    case KeyboardType::alphaNumeric:
        return platform::KeyboardType::namePhonePad;
    default:
        return platform::KeyboardType::numberPad;
    }
}

/// `text` with the characters of `range` replaced.
std::string replaced(const std::string& text, TextRange range, const std::string& replacement) {
    const auto before = text::firstCharacters(text, range.location).value_or(text);
    const auto through = text::firstCharacters(text, range.location + range.length).value_or(text);
    return std::string{before} + replacement + text.substr(through.size());
}

std::size_t position(const LuOTPTextField& field) {
    return static_cast<std::size_t>(field.tag() - 1);
}

} // namespace

std::shared_ptr<LuOTPTextField> LuOTPView::field(int tag) {
    if (tag < 1 || tag > otpTextFieldsCount) {
        return nullptr;
    }
    for (const auto& subview : subviews()) {
        if (auto field = std::dynamic_pointer_cast<LuOTPTextField>(subview); field && field->tag() == tag) {
            return field;
        }
    }
    return makeField(tag);
}

std::shared_ptr<LuOTPTextField> LuOTPView::makeField(int tag) {
    secureEntryData.resize(static_cast<std::size_t>(otpTextFieldsCount));
    auto field = std::make_shared<LuOTPTextField>();
    field->setDelegate(std::static_pointer_cast<LuOTPView>(shared_from_this()));
    field->setTag(tag);
    field->setFrame(frameOf(tag));
    field->setFont(otpTextFieldFont);
    if (otpTextFieldFontColor) {
        field->setTextColor(*otpTextFieldFontColor);
    }
    field->setKeyboardType(platformKeyboard(otpTextFieldInputType));
    applyBorder(*field);
    field->setTintColor(shouldRequireCursor ? cursorColor : Color::clear());
    field->setBackgroundColor(otpTextFieldDefaultBackgroundColor);
    field->setPlaceholder(field->placeholderString);
    field->setAutocorrected(false);
    field->setTextAlignment(platform::TextAlignment::center);
    addSubview(field);
    return field;
}

/// The row is centred in the view.
platform::Rect LuOTPView::frameOf(int tag) const {
    const double size = otpTextFieldSize;
    const double gap = otpTextFieldSeparatorSpace;
    const int half = otpTextFieldsCount / 2;
    const double distance = half - (tag - 1);
    const double offset = otpTextFieldsCount % 2 == 0 ? size * distance + gap * (distance - 1) + gap / 2
                                                      : size / 2 + (size + gap) * distance;
    return {.origin = {.x = frame().size.width / 2 - offset, .y = (frame().size.height - size) / 2},
            .size = {.width = size, .height = size}};
}

void LuOTPView::layoutSubviews() {
    for (int tag = 1; tag <= otpTextFieldsCount; ++tag) {
        field(tag)->setFrame(frameOf(tag));
    }
}

void LuOTPView::getResponder() {
    auto target = aciveTextField;
    if (hasEnteredAllOTP) {
        target = field(otpTextFieldsCount);
    } else if (!target) {
        target = field(1);
    }
    if (target) {
        target->becomeFirstResponder();
    }
}

bool LuOTPView::textFieldShouldBeginEditing(TextField& editing) {
    aciveTextField = field(editing.tag());
    ui::setBorderColorExt(editing, otpTextFieldDefaultBorderColor);
    return true;
}

void LuOTPView::textFieldDidBeginEditing(TextField& /*field*/) {
    if (isEditing) {
        isEditing(true);
    }
}

void LuOTPView::textFieldDidEndEditing(TextField& /*field*/) {
    if (isEditing) {
        isEditing(false);
    }
}

bool LuOTPView::shouldChangeCharacters(TextField& changing, TextRange range, const std::string& replacement) {
    const auto own = field(changing.tag());
    if (!own) {
        return false;
    }
    const auto result = replaced(changing.text(), range, replacement);
    if (result.empty()) {
        deletion(*own);
    } else if (otpTextFieldInputType != KeyboardType::alphabet || text::containsLetter(result)) {
        characterTyped(*own, replacement);
    } else if (aciveTextField) {
        ui::setBorderColorExt(*aciveTextField, otpTextFieldDefaultBorderColor);
    }
    return false;
}

void LuOTPView::characterTyped(LuOTPTextField& typed, const std::string& character) {
    secureEntryData[position(typed)] = character;
    typed.setBackgroundColor(otpTextFieldEnteredBackgroundColor);
    typed.setText(shown(character));
    applyBorder(typed);
    if (const auto next = field(typed.tag() + 1)) {
        next->becomeFirstResponder();
        aciveTextField = next;
        ui::setBorderColorExt(*next, otpTextFieldDefaultBorderColor);
    } else {
        typed.resignFirstResponder();
    }
    completionCheck();
}

std::string LuOTPView::shown(const std::string& character) const {
    if (otpFilledEntryDisplay) {
        return " ";
    }
    return otpTextFieldEntrySecureType ? "*" : character;
}

void LuOTPView::completionCheck() {
    std::string code;
    for (const auto& entry : secureEntryData) {
        code += entry;
    }
    if (text::characterCount(code) != static_cast<std::size_t>(otpTextFieldsCount)) {
        return;
    }
    hasEnteredAllOTP = true;
    for (int tag = 1; tag <= otpTextFieldsCount; ++tag) {
        ui::setBorderColorExt(*field(tag), otpTextFieldDefaultBorderColor);
    }
    if (otpEnteredString) {
        otpEnteredString(std::move(code));
    }
}

void LuOTPView::deletion(LuOTPTextField& deleted) {
    deleted.setBackgroundColor(Color::clear());
    const auto previous = field(deleted.tag() - 1);
    if (previous && deleted.text().empty()) {
        clear(*previous);
        previous->setBackgroundColor(Color::clear());
        return;
    }
    clear(deleted);
    if (previous) {
        aciveTextField = previous;
        previous->setBackgroundColor(darkBlue);
    }
}

void LuOTPView::clear(LuOTPTextField& cleared) {
    secureEntryData[position(cleared)].clear();
    cleared.setText("");
    cleared.becomeFirstResponder();
    hasEnteredAllOTP = false;
    if (aciveTextField) {
        applyBorder(*aciveTextField);
    }
}

void LuOTPView::applyBorder(LuOTPTextField& bordered) const {
    ui::setCornerRadiusExt(bordered, otpTextFieldSize / 2);
    ui::setBorderWidthExt(bordered, otpTextFieldBorderWidth);
    ui::setBorderColorExt(bordered, otpTextFieldDefaultBorderColor);
}

} // namespace kivo
