#import "Native.h"
#import "Properties.h"
#import "Value.h"

#include <kivo/Deployment.hpp>
#include <kivo/KivoAPIProvider.hpp>
#include <kivo/KivoSDK.hpp>
#import <kivo/objc/KivoDeployment.h>
#import <kivo/objc/KivoSDK.h>
#import <kivo/objc/ZorFrameworkWrapper.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

@implementation KivoSDK

KIVO_NO_ARCHIVE

+ (nullable KivoAPIProvider*)loadForProviderWithKey:(NSString*)key version:(NSString*)version {
    return kivo::objc::wrapped<KivoAPIProvider>(kivo::KivoSDK::loadForProvider(fromText(key), fromText(version)));
}

+ (LogLevel)logLevel {
    return static_cast<LogLevel>(kivo::KivoSDK::logLevel());
}

+ (void)setLogLevel:(LogLevel)level {
    kivo::KivoSDK::setLogLevel(enumeration<kivo::LogLevel>(level));
}

+ (NSString*)VERSION {
    return toText(kivo::KivoSDK::VERSION());
}

+ (void)setVERSION:(NSString*)version {
    kivo::KivoSDK::setVERSION(fromText(version));
}

+ (NSString*)requestedSDKVersion {
    return toText(kivo::KivoSDK::requestedSDKVersion());
}

+ (void)setRequestedSDKVersion:(NSString*)version {
    kivo::KivoSDK::setRequestedSDKVersion(fromText(version));
}

+ (BOOL)shouldApplyRetryLimit {
    return kivo::KivoSDK::shouldApplyRetryLimit();
}

+ (void)setShouldApplyRetryLimit:(BOOL)apply {
    kivo::KivoSDK::setShouldApplyRetryLimit(apply);
}

@end

@implementation ZorFrameworkWrapper

KIVO_NO_ARCHIVE

@synthesize apiProvider = _apiProvider;
@synthesize config = _config;

- (nullable KivoAPIProvider*)load:(NSString*)key version:(NSString*)version {
    self.apiProvider = [KivoSDK loadForProviderWithKey:key version:version];
    return self.apiProvider;
}

- (void)dealloc {
    [_apiProvider release];
    [_config release];
    [super dealloc];
}

@end

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

// Without the key, which is never logged.
- (NSString*)description {
    return [NSString stringWithFormat:@"<KivoDeployment: join pages %@, face scans %@, pins %@>",
                                      [self.joinPages componentsJoinedByString:@" "],
                                      self.faceTecProduction ? @"in production" : @"not in production",
                                      self.requiresPins ? @"required" : @"not required"];
}

- (void)install {
    kivo::Deployment::install(native(self));
}

@end
