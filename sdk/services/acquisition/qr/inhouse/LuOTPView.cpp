#include <kivo/LuOTPTextField.hpp>
#include <kivo/LuOTPView.hpp>
#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <utf8proc.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace kivo {
namespace {

using platform::Color;
using platform::TextField;
using platform::TextRange;

/// "Character 1 of 4" in the person's language.
std::string nameOfField(int tag, int count) {
    auto name = platform::localizedText("Character %1 of %2");
    for (const auto& [place, number] : {std::pair{"%1", tag}, {"%2", count}}) {
        if (const auto found = name.find(place); found != std::string::npos) {
            name.replace(found, 2, std::to_string(number));
        }
    }
    return name;
}

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

/// Whether the text has a letter, or a mark that belongs to a letter, of any script.
bool containsLetter(std::string_view text) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t point = 0;
        const auto length = utf8proc_iterate(bytes, left, &point);
        if (length <= 0) {
            ++bytes;
            --left;
            continue;
        }
        if (const auto category = utf8proc_category(point);
            category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_ME) {
            return true;
        }
        bytes += length;
        left -= length;
    }
    return false;
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

/// The input of a person so far.
struct LuOTPView::Entry {
    std::shared_ptr<LuOTPTextField> activeField;
    std::vector<std::string> characters;
    bool isComplete = false;
};

LuOTPView::LuOTPView()
    : entry_{std::make_unique<Entry>()} {
    // A code is read from the left in every language.
    overrideLayoutDirection(platform::LayoutDirection::leftToRight);
}

LuOTPView::~LuOTPView() = default;

const std::shared_ptr<LuOTPTextField>& LuOTPView::aciveTextField() const {
    return entry_->activeField;
}

const std::vector<std::string>& LuOTPView::secureEntryData() const {
    return entry_->characters;
}

bool LuOTPView::hasEnteredAllOTP() const {
    return entry_->isComplete;
}

std::shared_ptr<LuOTPTextField> LuOTPView::field(int tag) {
    if (tag < 1 || tag > otpTextFieldsCount) {
        return nullptr;
    }
    entry_->characters.resize(static_cast<std::size_t>(otpTextFieldsCount));
    for (const auto& subview : subviews()) {
        if (auto field = std::dynamic_pointer_cast<LuOTPTextField>(subview); field && field->tag() == tag) {
            takeIn(*field);
            return field;
        }
    }
    auto made = std::make_shared<LuOTPTextField>();
    made->setTag(tag);
    takeIn(*made);
    addSubview(made);
    return made;
}

/// Prepares the field as part of the row, unless the field is prepared already.
void LuOTPView::takeIn(LuOTPTextField& field) {
    if (field.delegate().get() == this) {
        return;
    }
    field.setDelegate(std::static_pointer_cast<LuOTPView>(shared_from_this()));
    field.setFrame(frameOf(field.tag()));
    field.setFont(otpTextFieldFont);
    if (otpTextFieldFontColor) {
        field.setTextColor(*otpTextFieldFontColor);
    }
    field.setKeyboardType(platformKeyboard(otpTextFieldInputType));
    applyBorder(field);
    field.setTintColor(shouldRequireCursor ? cursorColor : Color::clear());
    field.setBackgroundColor(otpTextFieldDefaultBackgroundColor);
    field.setAutocorrected(false);
    field.setTextAlignment(platform::TextAlignment::center);
    if (field.accessibility().label.empty()) {
        field.setAccessibilityLabel(nameOfField(field.tag(), otpTextFieldsCount));
    }
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

platform::Size LuOTPView::sizeThatFits(double widthLimit) {
    const double count = std::max(otpTextFieldsCount, 0);
    const double width = count * otpTextFieldSize + std::max(count - 1, 0.0) * otpTextFieldSeparatorSpace;
    return {.width = std::min(width, widthLimit), .height = otpTextFieldSize};
}

void LuOTPView::describe(platform::LayoutMembers& members) {
    constexpr int mostFields = 32;
    constexpr double mostPoints = 1000;
    members.integer("otpTextFieldsCount", 0, mostFields, members.into(otpTextFieldsCount));
    members.choice("otpTextFieldInputType", {"numeric", "alphabet", "alphaNumeric"},
                   [this](std::size_t index) { otpTextFieldInputType = static_cast<KeyboardType>(index); });
    members.font("otpTextFieldFont", members.into(otpTextFieldFont));
    members.flag("otpTextFieldEntrySecureType", members.into(otpTextFieldEntrySecureType));
    members.flag("otpFilledEntryDisplay", members.into(otpFilledEntryDisplay));
    members.flag("shouldRequireCursor", members.into(shouldRequireCursor));
    members.color("cursorColor", members.into(cursorColor));
    members.number("otpTextFieldSize", 0, mostPoints, members.into(otpTextFieldSize));
    members.number("otpTextFieldSeparatorSpace", 0, mostPoints, members.into(otpTextFieldSeparatorSpace));
    members.number("otpTextFieldBorderWidth", 0, mostPoints, members.into(otpTextFieldBorderWidth));
    members.number("otpTextFieldActiveBorderWidth", 0, mostPoints, members.into(otpTextFieldActiveBorderWidth));
    members.color("otpTextFieldDefaultBackgroundColor", members.into(otpTextFieldDefaultBackgroundColor));
    members.color("otpTextFieldEnteredBackgroundColor", members.into(otpTextFieldEnteredBackgroundColor));
    members.color("otpTextFieldDefaultBorderColor", members.into(otpTextFieldDefaultBorderColor));
    members.color("otpTextFieldActiveBorderColor", members.into(otpTextFieldActiveBorderColor));
    members.color("otpTextFieldErrorBorderColor", members.into(otpTextFieldErrorBorderColor));
    members.color("otpTextFieldFontColor", members.into(otpTextFieldFontColor));
}

void LuOTPView::getResponder() {
    auto target = entry_->activeField;
    if (entry_->isComplete) {
        target = field(otpTextFieldsCount);
    } else if (!target) {
        target = field(1);
    }
    if (target) {
        target->becomeFirstResponder();
    }
}

bool LuOTPView::textFieldShouldBeginEditing(TextField& editing) {
    entry_->activeField = field(editing.tag());
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
    if (own.get() != &changing) {
        return false;
    }
    const auto result = replaced(changing.text(), range, replacement);
    if (result.empty()) {
        deletion(*own);
    } else if (otpTextFieldInputType != KeyboardType::alphabet || containsLetter(result)) {
        characterTyped(*own, replacement);
    } else if (entry_->activeField) {
        ui::setBorderColorExt(*entry_->activeField, otpTextFieldDefaultBorderColor);
    }
    return false;
}

void LuOTPView::characterTyped(LuOTPTextField& typed, const std::string& character) {
    entry_->characters[position(typed)] = character;
    typed.setBackgroundColor(otpTextFieldEnteredBackgroundColor);
    typed.setText(shown(character));
    applyBorder(typed);
    if (const auto next = field(typed.tag() + 1)) {
        next->becomeFirstResponder();
        entry_->activeField = next;
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
    for (const auto& entry : entry_->characters) {
        code += entry;
    }
    if (text::characterCount(code) != static_cast<std::size_t>(otpTextFieldsCount)) {
        return;
    }
    entry_->isComplete = true;
    const auto self = shared_from_this();
    // A copy, because the host may replace or release the callback while the callback runs.
    if (const auto entered = otpEnteredString) {
        entered(std::move(code));
    }
    for (int tag = 1; tag <= otpTextFieldsCount; ++tag) {
        ui::setBorderColorExt(*field(tag), otpTextFieldDefaultBorderColor);
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
        entry_->activeField = previous;
        previous->setBackgroundColor(darkBlue);
    }
}

void LuOTPView::clear(LuOTPTextField& cleared) {
    entry_->characters[position(cleared)].clear();
    cleared.setText("");
    cleared.becomeFirstResponder();
    entry_->isComplete = false;
    if (entry_->activeField) {
        applyBorder(*entry_->activeField);
    }
}

void LuOTPView::applyBorder(LuOTPTextField& bordered) const {
    ui::setCornerRadiusExt(bordered, otpTextFieldSize / 2);
    ui::setBorderWidthExt(bordered, otpTextFieldBorderWidth);
    ui::setBorderColorExt(bordered, otpTextFieldDefaultBorderColor);
}

LuOTPTextField::LuOTPTextField() = default;

LuOTPTextField::~LuOTPTextField() = default;

void LuOTPTextField::setPlaceholderString(std::string placeholder) {
    placeholderString_ = std::move(placeholder);
    setPlaceholder(placeholderString_);
}

bool LuOTPTextField::deleteBackward() {
    const auto self = shared_from_this();
    // In a field with text, the deletion itself asks the delegate.
    const bool wasEmpty = text().empty();
    const bool changed = TextField::deleteBackward();
    // The delegate is asked only for a field that a person can reach.
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
