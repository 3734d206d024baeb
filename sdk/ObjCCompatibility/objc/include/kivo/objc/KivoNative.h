#pragma once

/// For Objective-C++ hosts: the C++ objects behind the Objective-C objects.

#include <kivo/kivo.hpp>
#import <kivo/objc/ActivationResponse.h>
#import <kivo/objc/KivoNavigationController.h>
#import <kivo/objc/KivoView.h>
#import <kivo/objc/KivoViewController.h>
#import <kivo/objc/KivoWindow.h>
#import <kivo/objc/LuOTPView.h>
#import <kivo/objc/ThemeCustomization.h>

#include <memory>

@interface ThemeCustomization (Native)

/// The Objective-C object of `theme`; nil for null.
+ (nullable ThemeCustomization*)themeWithNative:(const std::shared_ptr<kivo::ThemeCustomization>&)theme;

/// The pointer keeps the Objective-C object alive, too.
- (std::shared_ptr<kivo::ThemeCustomization>)nativeTheme;

@end

@interface KivoFaceTecCustomization (Native)

/// The Objective-C object of `customization`; nil for null.
+ (nullable KivoFaceTecCustomization*)customizationWithNative:
    (const std::shared_ptr<kivo::platform::FaceTecCustomization>&)customization;

- (std::shared_ptr<kivo::platform::FaceTecCustomization>)nativeCustomization;

@end

@interface ActivationResponse (Native)

/// The Objective-C object of `response`; nil for null.
+ (nullable ActivationResponse*)responseWithNative:(const std::shared_ptr<kivo::ActivationResponse>&)response;

- (std::shared_ptr<kivo::ActivationResponse>)nativeResponse;

@end

@interface KivoView (Native)

/// The Objective-C object of `view`, of the wrapper class for the view's class; nil for null.
+ (nullable KivoView*)viewWithNative:(const std::shared_ptr<kivo::platform::View>&)view;

- (std::shared_ptr<kivo::platform::View>)nativeView;

@end

@interface KivoLayoutConstraint (Native)

/// The Objective-C object of `constraint`; nil for null.
+ (nullable KivoLayoutConstraint*)constraintWithNative:
    (const std::shared_ptr<kivo::platform::LayoutConstraint>&)constraint;

- (std::shared_ptr<kivo::platform::LayoutConstraint>)nativeConstraint;

@end

@interface KivoViewController (Native)

/// The Objective-C object of `viewController`; nil for null.
+ (nullable KivoViewController*)viewControllerWithNative:
    (const std::shared_ptr<kivo::platform::ViewController>&)viewController;

/// The pointer keeps the Objective-C object alive, too.
- (std::shared_ptr<kivo::platform::ViewController>)nativeViewController;

@end

@interface KivoWindow (Native)

/// The window for a device that draws it. The pointer keeps the Objective-C object alive, too.
- (std::shared_ptr<kivo::platform::Window>)nativeWindow;

@end
