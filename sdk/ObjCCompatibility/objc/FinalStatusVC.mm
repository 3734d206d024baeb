#import "HostBlock.h"
#import "Properties.h"

#include <kivo/FinalStatusVC.hpp>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/KivoNative.h>

#include <memory>

namespace {

class Listener final : public kivo::FinalStatusVCDelegate, public std::enable_shared_from_this<Listener> {
public:
    explicit Listener(id<FinalStatusVCDelegate> host)
        : host_{host} {}

    /// The farewell is still to come when the screen and its Objective-C object have gone.
    std::shared_ptr<void> finalStatusWillDisappear() override {
        return {[host_ retain], [listener = shared_from_this()](void* host) {
                    @autoreleasepool {
                        [static_cast<id>(host) release];
                    }
                }};
    }

    void finalStatusDidDisappear() override {
        const id<FinalStatusVCDelegate> host = host_;
        void (^const farewell)() = ^{
            [host finalStatusDidDisappear];
        };
        kivo::objc::HostBlock{farewell}();
    }

    /// The host does not want to hear any more.
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

// The delegate may be what is being destroyed, and releases the screen.
- (void)dealloc {
    delete _listener;
    [super dealloc];
}

KIVO_PROPERTY(ThemeCustomization*, themeObj, setThemeObj)
KIVO_PROPERTY(ActivationResponse*, sessionObject, setSessionObject)

@end
