#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// Where the identity service of each environment is found.
__attribute__((visibility("default")))
@interface KivoDeployment : NSObject

/// Puts join pages in place of the placeholders that the library ships. Call it before the first join.
///
/// `joinPages` are the https addresses in the order of `SDKEnv`; a missing one is empty, and joins there fail.
/// `faceTecProduction` says whether the face scan library runs in production mode.
+ (void)installJoinPages:(NSArray<NSString*>*)joinPages faceTecProduction:(BOOL)faceTecProduction;

@end

NS_ASSUME_NONNULL_END
