#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The rule by which a version text selects an interface version.
__attribute__((visibility("default")))
@interface SdkVersions : NSObject

/// The first two characters of `version`, or "Invalid sdk version!" for a shorter text. No other check is made.
+ (NSString*)getPreciseVersionFromVersion:(NSString*)version;

@end

NS_ASSUME_NONNULL_END
