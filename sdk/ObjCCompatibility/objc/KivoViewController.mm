#import "HostBlock.h"
#import "Native.h"
#import "Properties.h"

#include <kivo/FinalStatusVC.hpp>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <memory>

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

// The presentation keeps the presented screen's wrapper alive, because the wrapper may hold a delegate.
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

namespace {

class Listener final : public kivo::FinalStatusVCDelegate, public std::enable_shared_from_this<Listener> {
public:
    explicit Listener(id<FinalStatusVCDelegate> host)
        : host_{host} {}

    /// Retains the host's delegate until the last call, which comes after the screen and its wrapper are gone.
    std::shared_ptr<void> finalStatusWillDisappear() override {
        return {[host_ retain], [listener = shared_from_this()](void* host) {
                    @autoreleasepool {
                        [static_cast<id>(host) release];
                    }
                }};
    }

    void finalStatusDidDisappear() override {
        const id<FinalStatusVCDelegate> host = host_;
        void (^const lastCall)() = ^{
            [host finalStatusDidDisappear];
        };
        kivo::objc::HostBlock{lastCall}();
    }

    /// Stops the calls to the host's delegate.
    void forget() { host_ = nil; }

    id<FinalStatusVCDelegate> host() const { return host_; }

private:
    id<FinalStatusVCDelegate> host_;
};

kivo::FinalStatusVC& native(FinalStatusVC* screen) {
    return static_cast<kivo::FinalStatusVC&>(*kivo::objc::native<kivo::platform::ViewController>(screen));
}

} // namespace

struct KivoFinalStatusListener {
    std::shared_ptr<Listener> object;
};

@implementation FinalStatusVC

- (nullable id<FinalStatusVCDelegate>)delegate {
    return _listener ? _listener->object->host() : nil;
}

- (void)setDelegate:(nullable id<FinalStatusVCDelegate>)delegate {
    if (_listener) {
        _listener->object->forget();
    }
    delete _listener;
    _listener = delegate ? new KivoFinalStatusListener{std::make_shared<Listener>(delegate)} : nullptr;
    native(self).delegate = _listener ? _listener->object : nullptr;
}

// Does not call the delegate, which may be the object that is being destroyed and releases the screen.
- (void)dealloc {
    delete _listener;
    [super dealloc];
}

KIVO_PROPERTY(ThemeCustomization*, themeObj, setThemeObj)
KIVO_PROPERTY(ActivationResponse*, sessionObject, setSessionObject)

@end
