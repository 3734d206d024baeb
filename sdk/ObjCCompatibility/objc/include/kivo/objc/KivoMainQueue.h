#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The library's main queue, on which screens live and answer.
__attribute__((visibility("default")))
@interface KivoMainQueue : NSObject

/// Lets `runLoop`, the run loop of the main thread, run the blocks of the library's main queue. Call once, on the main
/// thread.
+ (void)attachToRunLoop:(NSRunLoop*)runLoop;

@end

NS_ASSUME_NONNULL_END
