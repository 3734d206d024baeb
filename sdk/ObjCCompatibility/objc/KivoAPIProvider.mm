#import "HostBlock.h"
#import "Native.h"

#include <kivo/KivoAPIProvider.hpp>
#import <kivo/objc/KivoAPIProvider.h>

#include <memory>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::heldNative;

namespace {

// By value, because a completion that runs inside a call may release the provider.
std::shared_ptr<kivo::KivoAPIProvider> native(KivoAPIProvider* provider) {
    return kivo::objc::native<kivo::KivoAPIProvider>(provider);
}

std::shared_ptr<kivo::AcquisitionConfig> native(AcquisitionConfig* config) {
    return kivo::objc::native<kivo::AcquisitionConfig>(config);
}

::ObjCResult* converted(const kivo::ObjCResult& result) {
    if (result.success()) {
        return [[[::ObjCResult alloc] initWithSuccess:kivo::objc::wrapped<::IdvResult>(result.success())] autorelease];
    }
    return [[[::ObjCResult alloc] initWithError:kivo::objc::wrapped<::ObjCError>(result.error())] autorelease];
}

/// Copies `response`, and releases the copy with the last copy of the completion. Empty for nil.
kivo::ObjCCompletion completion(KivoCompletion response) {
    if (!response) {
        return {};
    }
    return [block = kivo::objc::HostBlock{response}](const std::shared_ptr<kivo::ObjCResult>& result) {
        @autoreleasepool {
            block(converted(*result));
        }
    };
}

} // namespace

@implementation KivoAPIProvider

@synthesize sdkTheme = _sdkTheme;

- (instancetype)initWithNative:(std::shared_ptr<void>)object {
    self = [super initWithNative:std::move(object)];
    if (self && !_sdkTheme) {
        self.sdkTheme = kivo::objc::wrapped<ThemeCustomization>(native(self)->sdkTheme());
    }
    return self;
}

- (void)dealloc {
    [_sdkTheme release];
    [super dealloc];
}

- (void)setThemeWithTheme:(nullable ThemeCustomization*)theme {
    native(self)->setTheme(heldNative<kivo::ThemeCustomization>(theme));
}

- (void)setContextWithViewController:(nullable KivoViewController*)viewController {
    native(self)->setContext(heldNative<kivo::platform::ViewController>(viewController));
}

- (void)acquireWithAcquisitionObject:(AcquisitionObject)object
                              config:(nullable AcquisitionConfig*)config
                            response:(nullable KivoCompletion)response {
    native(self)->acquire(enumeration<kivo::AcquisitionObject>(object), native(config), completion(response));
}

- (void)joinForCode:(NSString*)code
             config:(nullable AcquisitionConfig*)config
           response:(nullable KivoCompletion)response {
    native(self)->join(fromText(code), native(config), completion(response));
}

- (void)updateWithAction:(NSString*)action message:(NSString*)message response:(nullable KivoCompletion)response {
    native(self)->update(fromText(action), fromText(message), completion(response));
}

- (void)statusWithResponse:(nullable KivoCompletion)response {
    native(self)->status(completion(response));
}

- (void)commitWithResponse:(nullable KivoCompletion)response {
    native(self)->commit(completion(response));
}

- (void)resumeInBrowser {
    native(self)->resumeInBrowser();
}

- (void)uploadWithAcquisitionObject:(AcquisitionObject)acquisitionObject
                               data:(NSString*)data
                           response:(nullable KivoCompletion)response {
    native(self)->upload(enumeration<kivo::AcquisitionObject>(acquisitionObject), fromText(data), completion(response));
}

- (void)reset {
    native(self)->reset();
}

@end
