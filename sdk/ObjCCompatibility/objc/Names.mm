#import "Native.h"
#import "Value.h"

#include <kivo/kivo.hpp>
#import <kivo/objc/AcquisitionConfig.h>
#import <kivo/objc/AcquisitionObject.h>
#import <kivo/objc/IdvEvents.h>
#import <kivo/objc/SDKEnv.h>
#import <kivo/objc/SdkVersions.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

@implementation SDKEnvHelper

KIVO_NO_ARCHIVE

+ (NSString*)environmentNameFrom:(SDKEnv)environment {
    return toText(kivo::SDKEnvHelper::environmentName(enumeration<kivo::SDKEnv>(environment)));
}

@end

@implementation IdvEventsHelper

KIVO_NO_ARCHIVE

+ (NSString*)eventNameFrom:(IdvEvents)event {
    return toText(kivo::IdvEventsHelper::eventName(enumeration<kivo::IdvEvents>(event)));
}

@end

@implementation AcquisitionObjectHelper

KIVO_NO_ARCHIVE

+ (NSString*)acquisitionObjectNameFrom:(AcquisitionObject)object {
    return toText(kivo::AcquisitionObjectHelper::acquisitionObjectName(enumeration<kivo::AcquisitionObject>(object)));
}

@end

@implementation SdkVersions

KIVO_NO_ARCHIVE

+ (NSString*)getPreciseVersionFromVersion:(NSString*)version {
    return toText(kivo::SdkVersions::getPreciseVersion(fromText(version)));
}

@end

@implementation AcquisitionConfigKeys

KIVO_NO_ARCHIVE

+ (NSString*)ENVIRONMENT {
    return toText(kivo::AcquisitionConfigKeys::ENVIRONMENT);
}

+ (NSString*)KIVO_APP_DOCLIST {
    return toText(kivo::AcquisitionConfigKeys::KIVO_APP_DOCLIST);
}

+ (NSString*)KIVO_EXPIRE_GRACE {
    return toText(kivo::AcquisitionConfigKeys::KIVO_EXPIRE_GRACE);
}

+ (NSString*)KIVO_FACEMATCH_MIN {
    return toText(kivo::AcquisitionConfigKeys::KIVO_FACEMATCH_MIN);
}

+ (NSString*)KIVO_DOC_ISSUERS {
    return toText(kivo::AcquisitionConfigKeys::KIVO_DOC_ISSUERS);
}

+ (NSString*)KIVO_IMAGES {
    return toText(kivo::AcquisitionConfigKeys::KIVO_IMAGES);
}

@end
