#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The library's main queue, on which screens live and answer.
__attribute__((visibility("default")))
@interface KivoMainQueue : NSObject

/// Has `runLoop`, the main thread's, run what the library puts on its main queue. Call it once, on the main thread.
+ (void)attachToRunLoop:(NSRunLoop*)runLoop;

@end

NS_ASSUME_NONNULL_END
