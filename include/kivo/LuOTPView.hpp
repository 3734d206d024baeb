#pragma once

#include <kivo/Export.hpp>
#include <kivo/LuOTPTextField.hpp>
#include <kivo/RawValue.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo {

/// The keyboard for a one-time code.
enum class KeyboardType {
    numeric = 0,      ///< The number pad.
    alphabet = 1,     ///< The ASCII keyboard; a text without any letter is refused.
    alphaNumeric = 2, ///< The pad for names and phone numbers.
};

template <>
struct RawValues<KeyboardType> {
    static constexpr int first = 0;
    static constexpr int last = 2;
};

/// A row of circular fields for a short one-time code, one character each.
///
/// No screen of the SDK has this view: a host puts the view into a screen of its own, in code or in a storyboard, where
/// its class is "LuOTPView" and every property below is a member of the same name. The view makes its fields, or adopts
/// the fields of a storyboard, when the view is laid out or first asked for a field: set the properties before. The
/// view keeps the typed characters apart from the texts of the fields, so that the fields can show a mask. Main thread
/// only; lengths in points.
class KIVO_EXPORT LuOTPView final : public platform::View,
                                    public platform::TextFieldDelegate,
                                    public platform::DescribedInLayouts {
public:
    LuOTPView();
    ~LuOTPView() override;

    /// A number below 1 makes no field.
    int otpTextFieldsCount = 4;
    /// "numeric", "alphabet" or "alphaNumeric" in a storyboard.
    KeyboardType otpTextFieldInputType = KeyboardType::numeric;
    /// The font of the characters.
    platform::Font otpTextFieldFont = platform::Font::system(20);
    /// Shows "*" for every character.
    bool otpTextFieldEntrySecureType = false;
    /// Shows a blank for every character, also where a mask is set.
    bool otpFilledEntryDisplay = false;
    /// Whether the text cursor is shown.
    bool shouldRequireCursor = true;
    /// The colour of the text cursor, if the view shows one.
    platform::Color cursorColor = platform::Color::systemBlue();
    /// Width and height of a field.
    double otpTextFieldSize = 24;
    /// The distance between two fields.
    double otpTextFieldSeparatorSpace = 15;
    /// The width of the border around each field.
    double otpTextFieldBorderWidth = 3;
    /// Kept for the host: the view uses one width and one colour for the borders of all its fields.
    double otpTextFieldActiveBorderWidth = 3;
    /// The background of an empty field.
    platform::Color otpTextFieldDefaultBackgroundColor = platform::Color::clear();
    /// The background of a field with a character.
    platform::Color otpTextFieldEnteredBackgroundColor = platform::Color::clear();
    /// The colour of the border around each field.
    platform::Color otpTextFieldDefaultBorderColor = darkBlue;
    /// Kept for the host, like the next colour.
    platform::Color otpTextFieldActiveBorderColor = darkBlue;
    /// Kept for the host, likewise.
    platform::Color otpTextFieldErrorBorderColor = darkBlue;
    /// The colour of the characters; absent leaves the field's own colour.
    std::optional<platform::Color> otpTextFieldFontColor;

    /// Called with the code whenever a typed character makes the code complete. The fields' borders are set afterwards.
    std::function<void(std::string)> otpEnteredString;
    /// Called with true when editing begins and with false when editing ends, also between one field and the next.
    std::function<void(bool)> isEditing;

    /// The field being edited; null before the first.
    const std::shared_ptr<LuOTPTextField>& aciveTextField() const;

    /// The text typed into each field, in order; an empty text for an empty field.
    const std::vector<std::string>& secureEntryData() const;

    /// Whether every field holds a character.
    bool hasEnteredAllOTP() const;

    /// The field at a position, from 1; null for any other position.
    std::shared_ptr<LuOTPTextField> field(int tag);

    /// Gives the focus to the last field of a full row, otherwise to the edited field, otherwise to the first field.
    void getResponder();

    /// What the fields tell the view; hosts do not call these functions.
    bool textFieldShouldBeginEditing(platform::TextField& field) override;
    void textFieldDidBeginEditing(platform::TextField& field) override;
    void textFieldDidEndEditing(platform::TextField& field) override;
    /// Always refuses: the view writes the fields' texts itself.
    bool shouldChangeCharacters(platform::TextField& field, platform::TextRange range,
                                const std::string& replacement) override;

    /// The row's size.
    platform::Size sizeThatFits(double widthLimit) override;
    void describe(platform::LayoutMembers& members) override;

protected:
    void layoutSubviews() override;

private:
    struct Entry;

    static constexpr platform::Color darkBlue{.red = 0, .green = 39.0 / 255, .blue = 118.0 / 255};

    void takeIn(LuOTPTextField& field);
    platform::Rect frameOf(int tag) const;
    void characterTyped(LuOTPTextField& field, const std::string& character);
    void deletion(LuOTPTextField& field);
    void clear(LuOTPTextField& field);
    void completionCheck();
    std::string shown(const std::string& character) const;
    void applyBorder(LuOTPTextField& field) const;

    std::unique_ptr<Entry> entry_;
};

} // namespace kivo
