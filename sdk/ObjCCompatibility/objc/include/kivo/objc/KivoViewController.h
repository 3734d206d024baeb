#pragma once

#import <kivo/objc/KivoBundle.h>
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

/// A new screen, laid out by a scene of the bundle's resource `name`.storyboard. Nil where that cannot be made; a line
/// of `Services::diagnostics`, on standard error by default, says why.
+ (nullable KivoViewController*)viewControllerWithIdentifier:(NSString*)identifier
                                                inStoryboard:(NSString*)name
                                                    ofBundle:(KivoBundle*)bundle;

/// The screen's own view; made on first use.
@property (nonatomic, readonly) KivoView* view;

/// Shows `viewController` over this screen, or over the one that this screen already presents.
- (void)presentViewController:(KivoViewController*)viewController;

/// Takes away what this screen presents or, when it presents nothing, this screen itself.
- (void)dismiss;

@end

NS_ASSUME_NONNULL_END
