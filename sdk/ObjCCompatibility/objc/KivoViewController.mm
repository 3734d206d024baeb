#import "Native.h"
#import "Values.h"

#include <kivo/FinalStatusVC.hpp>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

@implementation KivoViewController

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::platform::ViewController>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

+ (nullable KivoViewController*)viewControllerWithIdentifier:(NSString*)identifier
                                                inStoryboard:(NSString*)name
                                                    ofBundle:(KivoBundle*)bundle {
    const auto nilBecause = [](const std::string& reason) -> KivoViewController* {
        kivo::platform::services().diagnostics->report("objc", reason);
        return nil;
    };
    const auto storyboard = kivo::platform::Storyboard::open(kivo::objc::fromText(name),
                                                             kivo::objc::native<kivo::platform::Bundle>(bundle));
    if (!storyboard) {
        return nilBecause(storyboard.error());
    }
    const auto screen = (*storyboard)->instantiate(kivo::objc::fromText(identifier));
    if (!screen) {
        return nilBecause(screen.error());
    }
    return [self viewControllerWithNative:*screen];
}

- (KivoView*)view {
    return [KivoView viewWithNative:kivo::objc::native<kivo::platform::ViewController>(self)->view()];
}

// The presented screen's own Objective-C object lasts as long as the presentation: it may hold a delegate.
- (void)presentViewController:(KivoViewController*)viewController {
    if (viewController) {
        [self nativeViewController]->present([viewController nativeViewController], /*animated=*/true);
    }
}

- (void)dismiss {
    [self nativeViewController]->dismiss(/*animated=*/true);
}

@end

@implementation KivoViewController (Native)

+ (nullable KivoViewController*)viewControllerWithNative:
    (const std::shared_ptr<kivo::platform::ViewController>&)viewController {
    const bool isFinal = dynamic_cast<kivo::FinalStatusVC*>(viewController.get()) != nullptr;
    const Class kind = isFinal ? [FinalStatusVC class] : [KivoViewController class];
    return [[[kind alloc] initWithNative:viewController] autorelease];
}

- (std::shared_ptr<kivo::platform::ViewController>)nativeViewController {
    return kivo::objc::heldNative<kivo::platform::ViewController>(self);
}

@end
