#import "Properties.h"

#include <kivo/ActivationResponse.hpp>
#import <kivo/objc/KivoNative.h>

namespace {

kivo::ActivationResponse& native(ActivationResponse* response) {
    return *kivo::objc::native<kivo::ActivationResponse>(response);
}

} // namespace

@implementation ActivationResponse

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::ActivationResponse>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

+ (nullable instancetype)responseWithText:(NSString*)text {
    auto decoded = kivo::ActivationResponse::decode(kivo::objc::fromText(text));
    return kivo::objc::wrapped<ActivationResponse>(
        decoded ? std::make_shared<kivo::ActivationResponse>(std::move(*decoded)) : nullptr);
}

// Without the settings, which hold the session's keys.
- (NSString*)description {
    return [NSString stringWithFormat:@"<ActivationResponse: %@ %@>", self.responseType, self.responseCode];
}

KIVO_PROPERTY(NSString*, responseType, setResponseType)
KIVO_PROPERTY(NSString*, responseCode, setResponseCode)
KIVO_PROPERTY(NSString*, tId, setTId)
KIVO_PROPERTY(NSDictionary*, idpConfig, setIdpConfig)
KIVO_PROPERTY(NSDictionary*, appConfig, setAppConfig)
KIVO_PROPERTY(NSDictionary*, idpBiodata, setIdpBiodata)
KIVO_PROPERTY(NSDictionary*, idpFaceMap, setIdpFaceMap)

+ (BOOL)isDocumentListAvailableWithSessionObj:(nullable ActivationResponse*)sessionObj {
    return kivo::ActivationResponse::isDocumentListAvailable(sessionObj ? &native(sessionObj) : nullptr);
}

@end

@implementation ActivationResponse (Native)

+ (nullable ActivationResponse*)responseWithNative:(const std::shared_ptr<kivo::ActivationResponse>&)response {
    return kivo::objc::wrapped<ActivationResponse>(response);
}

- (std::shared_ptr<kivo::ActivationResponse>)nativeResponse {
    return kivo::objc::native<kivo::ActivationResponse>(self);
}

@end
