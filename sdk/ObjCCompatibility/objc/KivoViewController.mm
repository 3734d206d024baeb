#import "HostBlock.h"
#import "Native.h"
#import "Properties.h"
#import "Value.h"

#include <kivo/FinalStatusVC.hpp>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <functional>
#include <memory>

/// A host's screen, which passes its life cycle on to the Objective-C object as long as that lives.
struct KivoHostScreen final : kivo::platform::ViewController {
    explicit KivoHostScreen(KivoViewController* controller)
        : host{controller} {}

    void viewDidLoad() override {
        tell([](KivoViewController* screen) { [screen viewDidLoad]; });
    }

    void viewWillAppear(bool animated) override {
        tell([animated](KivoViewController* screen) { [screen viewWillAppear:animated]; });
    }

    void viewDidAppear(bool animated) override {
        tell([animated](KivoViewController* screen) { [screen viewDidAppear:animated]; });
    }

    void viewWillDisappear(bool animated) override {
        tell([animated](KivoViewController* screen) { [screen viewWillDisappear:animated]; });
    }

    void viewDidDisappear(bool animated) override {
        tell([animated](KivoViewController* screen) { [screen viewDidDisappear:animated]; });
    }

    void tell(const std::function<void(KivoViewController*)>& call) const {
        if (KivoViewController* const screen = host) {
            void (^const block)() = ^{
                call(screen);
            };
            kivo::objc::HostBlock{block}();
        }
    }

    /// Not retained.
    KivoViewController* host;
};

@implementation KivoViewController

- (instancetype)init {
    const auto screen = std::make_shared<KivoHostScreen>(self);
    self = [super initWithNative:std::shared_ptr<kivo::platform::ViewController>{screen}];
    if (self) {
        _screen = screen.get();
    }
    return self;
}

- (void)dealloc {
    if (_screen) {
        _screen->host = nil;
    }
    [super dealloc];
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

- (NSString*)title {
    return kivo::objc::toText([self nativeViewController]->navigationItem() -> title());
}

- (void)setTitle:(NSString*)title {
    [self nativeViewController]->navigationItem() -> setTitle(kivo::objc::fromText(title));
}

- (nullable KivoNavigationController*)navigationController {
    return static_cast<KivoNavigationController*>(
        [KivoViewController viewControllerWithNative:[self nativeViewController]->navigationController()]);
}

- (nullable KivoViewController*)presentedViewController {
    return [KivoViewController viewControllerWithNative:[self nativeViewController]->presentedViewController()];
}

- (nullable KivoViewController*)presentingViewController {
    return [KivoViewController viewControllerWithNative:[self nativeViewController]->presentingViewController()];
}

- (void)viewDidLoad {
}

- (void)viewWillAppear:(BOOL)animated {
}

- (void)viewDidAppear:(BOOL)animated {
}

- (void)viewWillDisappear:(BOOL)animated {
}

- (void)viewDidDisappear:(BOOL)animated {
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
    Class kind = [KivoViewController class];
    if (dynamic_cast<kivo::FinalStatusVC*>(viewController.get())) {
        kind = [FinalStatusVC class];
    } else if (dynamic_cast<kivo::platform::NavigationController*>(viewController.get())) {
        kind = [KivoNavigationController class];
    }
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

KIVO_NO_INIT

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
