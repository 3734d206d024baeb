#import "Properties.h"

#include <kivo/ZorCloseButtonAppearance.hpp>
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

KIVO_NUMBER(BOOL, closeButtonIsHidden, setCloseButtonIsHidden)
KIVO_OBJECT(KivoImage, closeButtonImage, setCloseButtonImage)
KIVO_OBJECT(KivoImage, closeButtonBackGroundImage, setCloseButtonBackGroundImage)
KIVO_VALUE(NSString, closeButtonTitle, setCloseButtonTitle)
KIVO_VALUE(KivoColor, closeButtonBackgroundColor, setCloseButtonBackgroundColor)
KIVO_VALUE(KivoColor, closeButtonTitleColor, setCloseButtonTitleColor)
KIVO_NUMBER(double, closeButtonWidth, setCloseButtonWidth)
KIVO_NUMBER(double, closeButtonHeight, setCloseButtonHeight)
KIVO_VALUE(NSNumber, closeButtonCornerRadius, setCloseButtonCornerRadius)
KIVO_VALUE(KivoFont, closeButtonFont, setCloseButtonFont)

@end
