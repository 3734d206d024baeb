#pragma once

#import <kivo/objc/KivoView.h>

NS_ASSUME_NONNULL_BEGIN

/// The host's view controller, on which acquisition screens are presented. Main thread only.
///
/// An Objective-C++ host makes one around the view controller that it shows: see `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoViewController : KivoObject

/// A view controller without content of its own.
- (instancetype)init;
+ (instancetype)new;

/// The screen's own view; made on first use.
@property (nonatomic, readonly) KivoView* view;

@end

NS_ASSUME_NONNULL_END
