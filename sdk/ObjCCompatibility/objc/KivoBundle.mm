#import "Properties.h"

#include <kivo/platform/Services.hpp>

@implementation KivoBundle

+ (instancetype)mainBundle {
    return kivo::objc::wrapped<KivoBundle>(kivo::platform::services().bundles->main());
}

+ (nullable instancetype)bundleWithIdentifier:(NSString*)identifier {
    return kivo::objc::wrapped<KivoBundle>(
        kivo::platform::services().bundles->withIdentifier(kivo::objc::fromText(identifier)));
}

- (NSString*)bundleIdentifier {
    const auto identifier = kivo::objc::native<kivo::platform::Bundle>(self)->bundleIdentifier();
    return kivo::objc::toText(identifier.value_or(""));
}

@end
