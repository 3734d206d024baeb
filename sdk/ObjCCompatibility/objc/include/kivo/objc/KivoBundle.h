#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A folder of resources that the library knows.
__attribute__((visibility("default")))
@interface KivoBundle : KivoObject

/// The host application's own.
+ (instancetype)mainBundle;
/// The bundle whose "CFBundleIdentifier" this is; nil when the library knows none.
+ (nullable instancetype)bundleWithIdentifier:(NSString*)identifier;

/// Empty when the bundle has none.
@property (nonatomic, readonly) NSString* bundleIdentifier;

@end

NS_ASSUME_NONNULL_END
