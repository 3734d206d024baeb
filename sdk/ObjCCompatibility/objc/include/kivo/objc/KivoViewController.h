#pragma once

#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoView.h>

NS_ASSUME_NONNULL_BEGIN

@class KivoNavigationController;

/// A screen of the host, on which acquisition screens are presented. Main thread only.
///
/// The screen shows the views that the host adds to `view`. A subclass overrides the methods of the life cycle; their
/// exceptions are reported as diagnostics and go no further. The window, the stack or the screen that shows the screen
/// retains it. An Objective-C++ host wraps its own C++ screens: see `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoViewController : KivoObject {
@private
    struct KivoHostScreen* _screen;
}

/// An empty screen.
- (instancetype)init;
+ (instancetype)new;

/// A new screen, laid out by a scene of the bundle's resource `name`.storyboard. Nil where the screen cannot be made; a
/// line of `Services::diagnostics`, on standard error by default, gives the reason.
+ (nullable KivoViewController*)viewControllerWithIdentifier:(NSString*)identifier
                                                inStoryboard:(NSString*)name
                                                    ofBundle:(KivoBundle*)bundle;

/// The screen's view; made on first use.
@property (nonatomic, readonly) KivoView* view;
/// The title in the navigation bar; empty at first.
@property (nonatomic, copy) NSString* title;

// Where the screen is.

/// The navigation controller whose stack holds this screen; nil without such a controller.
@property (nonatomic, readonly, nullable) KivoNavigationController* navigationController;
@property (nonatomic, readonly, nullable) KivoViewController* presentedViewController;
@property (nonatomic, readonly, nullable) KivoViewController* presentingViewController;

/// Shows `viewController` over this screen, or over the screen that this screen already presents.
- (void)presentViewController:(KivoViewController*)viewController;

/// Dismisses the screen that this screen presents or, without such a screen, this screen.
- (void)dismiss;

// The life cycle, for subclasses; not called for screens of a storyboard. The methods of this class do nothing. The
// `...Will...` methods run inside the call that moves the screen, the `...Did...` methods on the main queue afterwards.

- (void)viewDidLoad;
- (void)viewWillAppear:(BOOL)animated;
- (void)viewDidAppear:(BOOL)animated;
- (void)viewWillDisappear:(BOOL)animated;
- (void)viewDidDisappear:(BOOL)animated;

@end

NS_ASSUME_NONNULL_END
