#pragma once

#import <kivo/objc/KivoControls.h>

NS_ASSUME_NONNULL_BEGIN

/// The keyboard for a one-time code.
typedef NS_ENUM(NSInteger, KeyboardType) {
    KeyboardTypeNumeric = 0,      ///< The number pad.
    KeyboardTypeAlphabet = 1,     ///< The ASCII keyboard; a text without any letter is refused.
    KeyboardTypeAlphaNumeric = 2, ///< The pad for names and phone numbers.
};

/// One field of a `LuOTPView`. Main thread only.
__attribute__((visibility("default")))
@interface LuOTPTextField : KivoTextField

/// The text that the empty field shows; empty at first.
@property (nonatomic, copy) NSString* placeholderString;

// Kept for the host: a `LuOTPView` gives its fields the border of its own properties.

@property (nonatomic, copy) KivoColor* borderColorOfTextField;
/// In points; 2 at first.
@property (nonatomic) double borderWidthOfTextField;

@end

/// A row of circular fields for a short one-time code, one character each.
///
/// No screen of the SDK has this view: a host puts the view into a screen of its own, in code or in a storyboard. Set
/// the properties before the view is shown. The view keeps the typed characters apart from the texts of the fields, so
/// that the fields can show a mask. Main thread only; lengths in points. A block that refers to the view keeps the view
/// alive until the block is replaced.
__attribute__((visibility("default")))
@interface LuOTPView : KivoView

/// 4 at first; a number below 1 makes no field.
@property (nonatomic) NSInteger otpTextFieldsCount;
/// Numeric at first.
@property (nonatomic) KeyboardType otpTextFieldInputType;
/// The system's font of 20 points at first.
@property (nonatomic, copy) KivoFont* otpTextFieldFont;
/// Shows "*" for every character. NO at first.
@property (nonatomic) BOOL otpTextFieldEntrySecureType;
/// Shows a blank for every character, also where a mask is set. NO at first.
@property (nonatomic) BOOL otpFilledEntryDisplay;
/// Whether the text cursor is shown. YES at first.
@property (nonatomic) BOOL shouldRequireCursor;
@property (nonatomic, copy) KivoColor* cursorColor;
/// Width and height of a field; 24 at first.
@property (nonatomic) double otpTextFieldSize;
/// The distance between two fields; 15 at first.
@property (nonatomic) double otpTextFieldSeparatorSpace;
/// 3 at first.
@property (nonatomic) double otpTextFieldBorderWidth;
/// Kept for the host: the view uses one width and one colour for the borders of all its fields.
@property (nonatomic) double otpTextFieldActiveBorderWidth;
/// The background of an empty field; clear at first.
@property (nonatomic, copy) KivoColor* otpTextFieldDefaultBackgroundColor;
/// The background of a field with a character; clear at first.
@property (nonatomic, copy) KivoColor* otpTextFieldEnteredBackgroundColor;
@property (nonatomic, copy) KivoColor* otpTextFieldDefaultBorderColor;
/// Kept for the host, like the next colour.
@property (nonatomic, copy) KivoColor* otpTextFieldActiveBorderColor;
@property (nonatomic, copy) KivoColor* otpTextFieldErrorBorderColor;
/// The colour of the characters; nil leaves the field's own colour.
@property (nonatomic, copy, nullable) KivoColor* otpTextFieldFontColor;

/// Called with the code whenever a typed character makes the code complete.
@property (nonatomic, copy, nullable) void (^otpEnteredString)(NSString* code);
/// Called with YES when editing begins and with NO when editing ends, also between one field and the next.
@property (nonatomic, copy, nullable) void (^isEditing)(BOOL isEditing);

/// The field being edited; nil before the first.
@property (nonatomic, readonly, nullable) LuOTPTextField* aciveTextField;
/// The text typed into each field, in order; an empty text for an empty field.
@property (nonatomic, readonly) NSArray<NSString*>* secureEntryData;
/// Whether every field holds a character.
@property (nonatomic, readonly) BOOL hasEnteredAllOTP;

/// The field at a position, from 1; nil for any other position.
- (nullable LuOTPTextField*)fieldWithTag:(NSInteger)tag;

/// Gives the focus to the last field of a full row, otherwise to the edited field, otherwise to the first field.
- (void)getResponder;

@end

NS_ASSUME_NONNULL_END
