#import "Native.h"

#import <kivo/objc/KivoNative.h>

@implementation KivoViewController

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::platform::ViewController>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

- (KivoView*)view {
    return [KivoView viewWithNative:kivo::objc::native<kivo::platform::ViewController>(self)->view()];
}

@end

@implementation KivoViewController (Native)

+ (nullable KivoViewController*)viewControllerWithNative:
    (const std::shared_ptr<kivo::platform::ViewController>&)viewController {
    return kivo::objc::wrapped<KivoViewController>(viewController);
}

- (std::shared_ptr<kivo::platform::ViewController>)nativeViewController {
    return kivo::objc::heldNative<kivo::platform::ViewController>(self);
}

@end
