#import "Native.h"

#import <kivo/objc/KivoNative.h>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>

using kivo::objc::heldNative;
using kivo::platform::NavigationController;
using kivo::platform::View;
using kivo::platform::ViewController;
using kivo::platform::Window;

namespace {

Window& native(KivoWindow* window) {
    return static_cast<Window&>(*[window nativeView]);
}

// By value, because a screen that leaves may release the stack.
std::shared_ptr<NavigationController> native(KivoNavigationController* stack) {
    return std::static_pointer_cast<NavigationController>([stack nativeViewController]);
}

} // namespace

@implementation KivoWindow

- (instancetype)init {
    return [super initWithNativeView:std::make_shared<Window>()];
}

- (instancetype)initWithSize:(NSSize)size {
    return [super
        initWithNativeView:std::make_shared<Window>(kivo::platform::Size{.width = size.width, .height = size.height})];
}

- (nullable KivoViewController*)rootViewController {
    return [KivoViewController viewControllerWithNative:native(self).rootViewController()];
}

- (void)setRootViewController:(nullable KivoViewController*)root {
    native(self).setRootViewController(heldNative<ViewController>(root));
}

- (nullable KivoViewController*)visibleViewController {
    return [KivoViewController viewControllerWithNative:native(self).visibleViewController()];
}

- (KivoUserInterfaceStyle)userInterfaceStyle {
    return [super userInterfaceStyle];
}

- (void)setUserInterfaceStyle:(KivoUserInterfaceStyle)style {
    native(self).setUserInterfaceStyle(style == KivoUserInterfaceStyleDark ? kivo::platform::UserInterfaceStyle::dark
                                                                           : kivo::platform::UserInterfaceStyle::light);
}

- (nullable KivoView*)hitTest:(NSPoint)point {
    return [KivoView viewWithNative:native(self).hitTest({.x = point.x, .y = point.y})];
}

@end

@implementation KivoWindow (Native)

- (std::shared_ptr<Window>)nativeWindow {
    return std::static_pointer_cast<Window>(heldNative<View>(self));
}

@end

@implementation KivoNavigationController

- (instancetype)init {
    return [self initWithRootViewController:nil];
}

- (instancetype)initWithRootViewController:(nullable KivoViewController*)root {
    return [super initWithNative:std::shared_ptr<ViewController>{
                                     std::make_shared<NavigationController>(heldNative<ViewController>(root))}];
}

- (NSArray<KivoViewController*>*)viewControllers {
    NSMutableArray* const screens = [NSMutableArray array];
    for (const auto& screen : native(self)->viewControllers()) {
        [screens addObject:[KivoViewController viewControllerWithNative:screen]];
    }
    return screens;
}

- (nullable KivoViewController*)topViewController {
    return [KivoViewController viewControllerWithNative:native(self)->topViewController()];
}

- (BOOL)isNavigationBarHidden {
    return native(self)->isNavigationBarHidden();
}

- (void)setNavigationBarHidden:(BOOL)hidden {
    native(self)->setNavigationBarHidden(hidden);
}

- (void)pushViewController:(KivoViewController*)viewController {
    if (viewController) {
        native(self)->pushViewController([viewController nativeViewController], /*animated=*/true);
    }
}

- (nullable KivoViewController*)popViewController {
    return [KivoViewController viewControllerWithNative:native(self)->popViewController(/*animated=*/true)];
}

- (void)popToViewController:(KivoViewController*)viewController {
    if (viewController) {
        native(self)->popToViewController([viewController nativeViewController], /*animated=*/true);
    }
}

@end
