#import "HostBlock.h"
#import "Properties.h"
#import "Value.h"

#import <kivo/objc/KivoControls.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/TextField.hpp>

using kivo::objc::HostBlock;
using kivo::platform::Button;
using kivo::platform::Label;
using kivo::platform::TextField;
using kivo::platform::TextStyled;

namespace {

TextStyled& native(KivoTextStyled* view) {
    return static_cast<TextStyled&>(*[view nativeView]);
}

Label& native(KivoLabel* label) {
    return static_cast<Label&>(*[label nativeView]);
}

Button& native(KivoButton* button) {
    return static_cast<Button&>(*[button nativeView]);
}

TextField& native(KivoTextField* field) {
    return static_cast<TextField&>(*[field nativeView]);
}

} // namespace

@implementation KivoTextStyled

KIVO_NO_INIT

KIVO_FORWARDED(KivoFont*, font, setFont)
KIVO_FORWARDED(KivoColor*, textColor, setTextColor)

@end

@implementation KivoLabel

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<Label>()];
}

KIVO_FORWARDED(NSString*, text, setText)

@end

@implementation KivoButton

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<Button>()];
}

KIVO_FORWARDED(NSString*, title, setTitle)
KIVO_FORWARDED(BOOL, isEnabled, setEnabled)

- (void)addTapAction:(void (^)(void))action {
    if (action) {
        native(self).addAction(kivo::platform::ControlEvent::touchUpInside,
                               [block = HostBlock{action}](const auto& /*sender*/) { block(); });
    }
}

@end

@implementation KivoTextField

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<TextField>()];
}

KIVO_FORWARDED(NSString*, text, setText)
KIVO_FORWARDED(NSString*, placeholder, setPlaceholder)
KIVO_FORWARDED(BOOL, isEnabled, setEnabled)

- (BOOL)insertText:(NSString*)text {
    return native(self).insertText(kivo::objc::fromText(text));
}

@end
