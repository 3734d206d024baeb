#import "Properties.h"

#include <kivo/Deployment.hpp>
#import <kivo/objc/KivoDeployment.h>

namespace {

kivo::Deployment& native(KivoDeployment* deployment) {
    return *kivo::objc::native<kivo::Deployment>(deployment);
}

} // namespace

@implementation KivoDeployment

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::Deployment>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

+ (instancetype)current {
    return kivo::objc::wrapped<KivoDeployment>(std::make_shared<kivo::Deployment>(kivo::Deployment::current()));
}

KIVO_PROPERTY(NSArray*, joinPages, setJoinPages)
KIVO_PROPERTY(BOOL, faceTecProduction, setFaceTecProduction)
KIVO_PROPERTY(NSString*, faceTecProductionKey, setFaceTecProductionKey)
KIVO_PROPERTY(BOOL, requiresPins, setRequiresPins)

- (void)install {
    kivo::Deployment::install(native(self));
}

@end
