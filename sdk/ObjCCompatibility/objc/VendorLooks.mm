#import "Properties.h"
#import "Value.h"

#include <kivo/ReadIDUIResourcesWrapper.hpp>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Services.hpp>

#include <vector>

using kivo::platform::FaceTecCustomization;
using kivo::platform::Image;

@implementation KivoFaceTecCustomization

+ (nullable instancetype)customizationWithVendorDefaults {
    const auto& vendor = kivo::platform::services().faceTec;
    return kivo::objc::wrapped<KivoFaceTecCustomization>(vendor ? vendor->makeCustomization() : nullptr);
}

- (NSArray<KivoImage*>*)retryScreenSlideshowImages {
    NSMutableArray* const images = [NSMutableArray array];
    for (const auto& image : [self nativeCustomization]->guidanceCustomization.retryScreenSlideshowImages) {
        [images addObject:kivo::objc::shown<KivoImage*>(image)];
    }
    return images;
}

- (void)setRetryScreenSlideshowImages:(NSArray<KivoImage*>*)images {
    std::vector<std::shared_ptr<const Image>> taken;
    for (KivoImage* image in images) {
        kivo::objc::take(image, taken.emplace_back());
    }
    [self nativeCustomization]->guidanceCustomization.retryScreenSlideshowImages = std::move(taken);
}

@end

@implementation KivoFaceTecCustomization (Native)

+ (nullable KivoFaceTecCustomization*)customizationWithNative:
    (const std::shared_ptr<FaceTecCustomization>&)customization {
    return kivo::objc::wrapped<KivoFaceTecCustomization>(customization);
}

- (std::shared_ptr<FaceTecCustomization>)nativeCustomization {
    return kivo::objc::native<FaceTecCustomization>(self);
}

@end

namespace {

kivo::platform::readid::UIResources& native(KivoReadIDUIResources* resources) {
    return *kivo::objc::native<kivo::platform::readid::UIResources>(resources);
}

kivo::ReadIDUIResourcesWrapper native(ReadIDUIResourcesWrapper* /*wrapper*/) {
    return {};
}

} // namespace

@implementation KivoReadIDUIResources

KIVO_PROPERTY(KivoBundle*, customBundle, setCustomBundle)
KIVO_PROPERTY(NSString*, customStringTableName, setCustomStringTableName)
KIVO_PROPERTY(double, textSize, setTextSize)
KIVO_PROPERTY(KivoFont*, buttonFont, setButtonFont)
KIVO_PROPERTY(KivoFont*, titleFont, setTitleFont)
KIVO_PROPERTY(KivoFont*, textFont, setTextFont)
KIVO_PROPERTY(double, buttonTextSize, setButtonTextSize)
KIVO_PROPERTY(double, buttonHeight, setButtonHeight)
KIVO_PROPERTY(double, buttonCornerRadius, setButtonCornerRadius)
KIVO_PROPERTY(BOOL, isDynamicTypeEnabled, setIsDynamicTypeEnabled)

@end

@implementation ReadIDUIResourcesWrapper

KIVO_NO_ARCHIVE

KIVO_FORWARDED(double, textSize, setTextSize)
KIVO_FORWARDED(KivoFont*, buttonFont, setButtonFont)
KIVO_FORWARDED(KivoFont*, titleFont, setTitleFont)
KIVO_FORWARDED(KivoFont*, textFont, setTextFont)
KIVO_FORWARDED(double, buttonTextSize, setButtonTextSize)
KIVO_FORWARDED(double, buttonHeight, setButtonHeight)
KIVO_FORWARDED(BOOL, isDynamicTypeEnabled, setIsDynamicTypeEnabled)
KIVO_FORWARDED(NSString*, customStringTableName, setCustomStringTableName)

@end
