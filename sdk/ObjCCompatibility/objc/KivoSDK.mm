#import "Native.h"
#import "Values.h"

#include <kivo/KivoAPIProvider.hpp>
#include <kivo/KivoSDK.hpp>
#import <kivo/objc/KivoSDK.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

@implementation KivoSDK

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
