#pragma once

#import <kivo/objc/KivoViewController.h>

NS_ASSUME_NONNULL_BEGIN

/// The whole display of a phone, and the screens on it. Main thread only.
///
/// A window draws nothing. A device draws the window's tree and passes a person's input to it; `Kivo::device` is such a
/// device, in C++, and takes `nativeWindow` of `KivoNative.h`. Tests need no device.
__attribute__((visibility("default")))
@interface KivoWindow : KivoView

/// A window of 390 x 844 points.
- (instancetype)init;
- (instancetype)initWithSize:(NSSize)size;

/// The window's lowest screen, which the window retains. Its view is loaded and appears when it is set.
@property (nonatomic, retain, nullable) KivoViewController* rootViewController;
/// The screen that a person sees: the last presented one or, of a navigation stack, the topmost.
@property (nonatomic, readonly, nullable) KivoViewController* visibleViewController;

/// The appearance that the person has chosen; light at first. A change reaches the shown screens.
@property (nonatomic) KivoUserInterfaceStyle userInterfaceStyle;

/// The topmost view at a point of the display that takes touches; nil when there is none.
- (nullable KivoView*)hitTest:(NSPoint)point;

@end

NS_ASSUME_NONNULL_END
