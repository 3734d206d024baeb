#pragma once

#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoView.h>

NS_ASSUME_NONNULL_BEGIN

/// The host's view controller, on which acquisition screens are presented. Main thread only.
///
/// An Objective-C++ host wraps the view controller that it shows: see `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoViewController : KivoObject

/// A view controller without content of its own.
- (instancetype)init;
+ (instancetype)new;

/// A new screen, laid out by a scene of the bundle's resource `name`.storyboard. Nil where the screen cannot be made; a
/// line of `Services::diagnostics`, on standard error by default, gives the reason.
+ (nullable KivoViewController*)viewControllerWithIdentifier:(NSString*)identifier
                                                inStoryboard:(NSString*)name
                                                    ofBundle:(KivoBundle*)bundle;

/// The screen's view; made on first use.
@property (nonatomic, readonly) KivoView* view;

/// Shows `viewController` over this screen, or over the screen that this screen already presents.
- (void)presentViewController:(KivoViewController*)viewController;

/// Dismisses the screen that this screen presents or, without such a screen, this screen.
- (void)dismiss;

@end

NS_ASSUME_NONNULL_END
