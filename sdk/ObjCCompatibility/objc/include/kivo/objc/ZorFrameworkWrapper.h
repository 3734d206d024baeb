#pragma once

#import <kivo/objc/KivoAPIProvider.h>

NS_ASSUME_NONNULL_BEGIN

/// Loads a provider and keeps the provider. The properties may be used from any thread.
__attribute__((visibility("default")))
@interface ZorFrameworkWrapper : NSObject {
@private
    KivoAPIProvider* _apiProvider;
    AcquisitionConfig* _config;
}

/// Loads a provider, which replaces the former provider; a rejected version replaces the former provider by nil.
- (nullable KivoAPIProvider*)load:(NSString*)key version:(NSString*)version;

@property (atomic, retain, nullable) KivoAPIProvider* apiProvider;

/// Storage for the host's configuration, which the wrapper never reads.
@property (atomic, retain, nullable) AcquisitionConfig* config;

@end

NS_ASSUME_NONNULL_END
