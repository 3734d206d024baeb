#pragma once

#import <kivo/objc/KivoAPIProvider.h>

NS_ASSUME_NONNULL_BEGIN

/// Loads a provider and holds on to it. Its properties may be used from any thread.
__attribute__((visibility("default")))
@interface ZorFrameworkWrapper : NSObject {
@private
    KivoAPIProvider* _apiProvider;
    AcquisitionConfig* _config;
}

/// Loads a provider and keeps it in place of the former one, also when the version is rejected and it is nil.
- (nullable KivoAPIProvider*)load:(NSString*)key version:(NSString*)version;

@property (atomic, retain, nullable) KivoAPIProvider* apiProvider;

/// A place for the host's configuration; the wrapper never reads it.
@property (atomic, retain, nullable) AcquisitionConfig* config;

@end

NS_ASSUME_NONNULL_END
