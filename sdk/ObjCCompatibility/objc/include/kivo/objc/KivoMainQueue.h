#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The library's main queue, on which screens live and answer.
__attribute__((visibility("default")))
@interface KivoMainQueue : NSObject

/// Lets `runLoop`, the run loop of the main thread, run the blocks of the library's main queue in the common modes: the
/// default mode, and those in which AppKit shows panels and tracks the mouse. A second call has no further effect.
/// Raises `NSInvalidArgumentException` for nil, for another run loop, and on another thread than the main thread.
+ (void)attachToRunLoop:(NSRunLoop*)runLoop;

/// Undoes `attachToRunLoop:`; blocks wait until the queue is attached again. Raises on another thread than the main
/// thread.
+ (void)detach;

@end

NS_ASSUME_NONNULL_END
