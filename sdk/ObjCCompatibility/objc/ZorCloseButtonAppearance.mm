#import "Properties.h"

#include <kivo/ZorCloseButtonAppearance.hpp>
#import <kivo/objc/KivoNative.h>
#import <kivo/objc/ZorCloseButtonAppearance.h>

namespace {

kivo::ZorCloseButtonAppearance& native(ZorCloseButtonAppearance* appearance) {
    return *kivo::objc::native<kivo::ZorCloseButtonAppearance>(appearance);
}

} // namespace

@implementation ZorCloseButtonAppearance

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::ZorCloseButtonAppearance>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

KIVO_PROPERTY(BOOL, closeButtonIsHidden, setCloseButtonIsHidden)
KIVO_PROPERTY(KivoImage*, closeButtonImage, setCloseButtonImage)
KIVO_PROPERTY(KivoImage*, closeButtonBackGroundImage, setCloseButtonBackGroundImage)
KIVO_PROPERTY(NSString*, closeButtonTitle, setCloseButtonTitle)
KIVO_PROPERTY(KivoColor*, closeButtonBackgroundColor, setCloseButtonBackgroundColor)
KIVO_PROPERTY(KivoColor*, closeButtonTitleColor, setCloseButtonTitleColor)
KIVO_PROPERTY(double, closeButtonWidth, setCloseButtonWidth)
KIVO_PROPERTY(double, closeButtonHeight, setCloseButtonHeight)
KIVO_PROPERTY(NSNumber*, closeButtonCornerRadius, setCloseButtonCornerRadius)
KIVO_PROPERTY(KivoFont*, closeButtonFont, setCloseButtonFont)

- (void)applyAppearanceCloseButtonWithCloseButton:(KivoButton*)closeButton
                                  widthConstraint:(KivoLayoutConstraint*)widthConstraint
                                 heightConstraint:(KivoLayoutConstraint*)heightConstraint {
    if (closeButton && widthConstraint && heightConstraint) {
        native(self).applyAppearanceCloseButton(static_cast<kivo::platform::Button&>(*[closeButton nativeView]),
                                                *[widthConstraint nativeConstraint],
                                                *[heightConstraint nativeConstraint]);
    }
}

@end
