#import "HostBlock.h"
#import "Properties.h"

#include <kivo/LuOTPView.hpp>
#import <kivo/objc/KivoNative.h>

#include <functional>
#include <string>
#include <utility>

using kivo::objc::HostBlock;

namespace {

using CodeBlock = void (^)(NSString*);
using EditingBlock = void (^)(BOOL);

/// The view's callback around a host's block.
struct CodeCallback {
    HostBlock<CodeBlock> block;

    void operator()(const std::string& code) const {
        @autoreleasepool {
            block(kivo::objc::toText(code));
        }
    }
};

struct EditingCallback {
    HostBlock<EditingBlock> block;

    void operator()(bool isEditing) const { block(static_cast<BOOL>(isEditing)); }
};

/// The host's block in a callback; nil where there is none.
template <class Callback, class Function>
auto blockIn(const Function& function) -> decltype(std::declval<Callback>().block.block()) {
    const auto* const callback = function.template target<Callback>();
    if (!callback) {
        return nil;
    }
    return callback->block.block();
}

kivo::LuOTPTextField& native(LuOTPTextField* field) {
    return static_cast<kivo::LuOTPTextField&>(*[field nativeView]);
}

kivo::LuOTPView& native(LuOTPView* view) {
    return static_cast<kivo::LuOTPView&>(*[view nativeView]);
}

} // namespace

@implementation LuOTPTextField

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<kivo::LuOTPTextField>()];
}

KIVO_PROPERTY(KivoColor*, borderColorOfTextField, setBorderColorOfTextField)
KIVO_PROPERTY(double, borderWidthOfTextField, setBorderWidthOfTextField)

KIVO_FORWARDED(NSString*, placeholderString, setPlaceholderString)

@end

@implementation LuOTPView

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<kivo::LuOTPView>()];
}

KIVO_PROPERTY(NSInteger, otpTextFieldsCount, setOtpTextFieldsCount)
KIVO_PROPERTY(KeyboardType, otpTextFieldInputType, setOtpTextFieldInputType)
KIVO_PROPERTY(KivoFont*, otpTextFieldFont, setOtpTextFieldFont)
KIVO_PROPERTY(BOOL, otpTextFieldEntrySecureType, setOtpTextFieldEntrySecureType)
KIVO_PROPERTY(BOOL, otpFilledEntryDisplay, setOtpFilledEntryDisplay)
KIVO_PROPERTY(BOOL, shouldRequireCursor, setShouldRequireCursor)
KIVO_PROPERTY(KivoColor*, cursorColor, setCursorColor)
KIVO_PROPERTY(double, otpTextFieldSize, setOtpTextFieldSize)
KIVO_PROPERTY(double, otpTextFieldSeparatorSpace, setOtpTextFieldSeparatorSpace)
KIVO_PROPERTY(double, otpTextFieldBorderWidth, setOtpTextFieldBorderWidth)
KIVO_PROPERTY(double, otpTextFieldActiveBorderWidth, setOtpTextFieldActiveBorderWidth)
KIVO_PROPERTY(KivoColor*, otpTextFieldDefaultBackgroundColor, setOtpTextFieldDefaultBackgroundColor)
KIVO_PROPERTY(KivoColor*, otpTextFieldEnteredBackgroundColor, setOtpTextFieldEnteredBackgroundColor)
KIVO_PROPERTY(KivoColor*, otpTextFieldDefaultBorderColor, setOtpTextFieldDefaultBorderColor)
KIVO_PROPERTY(KivoColor*, otpTextFieldActiveBorderColor, setOtpTextFieldActiveBorderColor)
KIVO_PROPERTY(KivoColor*, otpTextFieldErrorBorderColor, setOtpTextFieldErrorBorderColor)
KIVO_PROPERTY(KivoColor*, otpTextFieldFontColor, setOtpTextFieldFontColor)

- (CodeBlock)otpEnteredString {
    return blockIn<CodeCallback>(native(self).otpEnteredString);
}

- (void)setOtpEnteredString:(CodeBlock)block {
    native(self).otpEnteredString = block ? std::function<void(std::string)>{CodeCallback{HostBlock{block}}} : nullptr;
}

- (EditingBlock)isEditing {
    return blockIn<EditingCallback>(native(self).isEditing);
}

- (void)setIsEditing:(EditingBlock)block {
    native(self).isEditing = block ? std::function<void(bool)>{EditingCallback{HostBlock{block}}} : nullptr;
}

- (nullable LuOTPTextField*)aciveTextField {
    return static_cast<LuOTPTextField*>([KivoView viewWithNative:native(self).aciveTextField()]);
}

- (NSArray<NSString*>*)secureEntryData {
    NSMutableArray* const entries = [NSMutableArray array];
    for (const auto& entry : native(self).secureEntryData()) {
        [entries addObject:kivo::objc::toText(entry)];
    }
    return entries;
}

- (BOOL)hasEnteredAllOTP {
    return native(self).hasEnteredAllOTP();
}

- (nullable LuOTPTextField*)fieldWithTag:(NSInteger)tag {
    return static_cast<LuOTPTextField*>([KivoView viewWithNative:native(self).field(kivo::objc::toInt(tag))]);
}

- (void)getResponder {
    native(self).getResponder();
}

@end
