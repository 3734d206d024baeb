#pragma once

#import <kivo/objc/KivoViewController.h>

NS_ASSUME_NONNULL_BEGIN

/// A stack of screens under a navigation bar; the topmost is shown. Main thread only.
///
/// Acquisition screens are pushed onto the stack of the provider's context.
__attribute__((visibility("default")))
@interface KivoNavigationController : KivoViewController

/// An empty stack, which shows nothing until a screen is pushed.
- (instancetype)init;
- (instancetype)initWithRootViewController:(nullable KivoViewController*)root;

/// From the lowest up.
@property (nonatomic, readonly) NSArray<KivoViewController*>* viewControllers;
@property (nonatomic, readonly, nullable) KivoViewController* topViewController;
@property (nonatomic, getter=isNavigationBarHidden) BOOL navigationBarHidden;

- (void)pushViewController:(KivoViewController*)viewController;
/// Removes the topmost screen and returns it; nil when only the root is left.
- (nullable KivoViewController*)popViewController;
/// Removes every screen above `viewController`; nil removes none.
- (void)popToViewController:(KivoViewController*)viewController;

@end

NS_ASSUME_NONNULL_END
