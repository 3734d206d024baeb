#pragma once

/// For Objective-C++ hosts: the C++ objects behind their Objective-C ones.

#include <kivo/kivo.hpp>
#import <kivo/objc/KivoViewController.h>
#import <kivo/objc/ThemeCustomization.h>

#include <memory>

@interface ThemeCustomization (Native)

/// The Objective-C object of `theme`; nil for null.
+ (nullable ThemeCustomization*)themeWithNative:(const std::shared_ptr<kivo::ThemeCustomization>&)theme;

/// Holds the Objective-C object, too.
- (std::shared_ptr<kivo::ThemeCustomization>)nativeTheme;

@end

@interface KivoViewController (Native)

/// The Objective-C object of `viewController`; nil for null.
+ (nullable KivoViewController*)viewControllerWithNative:
    (const std::shared_ptr<kivo::platform::ViewController>&)viewController;

/// Holds the Objective-C object, too.
- (std::shared_ptr<kivo::platform::ViewController>)nativeViewController;

@end
