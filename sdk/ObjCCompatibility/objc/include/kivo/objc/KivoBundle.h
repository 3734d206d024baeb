#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A folder of resources that the library knows.
__attribute__((visibility("default")))
@interface KivoBundle : KivoObject

/// The bundle of the host application.
+ (instancetype)mainBundle;
/// The bundle with this "CFBundleIdentifier"; nil when the library knows no such bundle.
+ (nullable instancetype)bundleWithIdentifier:(NSString*)identifier;

/// Empty for a bundle without an identifier.
@property (nonatomic, readonly) NSString* bundleIdentifier;

@end

NS_ASSUME_NONNULL_END
