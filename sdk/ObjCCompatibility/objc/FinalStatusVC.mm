#import "Properties.h"

#include <kivo/FinalStatusVC.hpp>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Services.hpp>

#include <chrono>

namespace {

class Listener final : public kivo::FinalStatusVCDelegate {
public:
    explicit Listener(id<FinalStatusVCDelegate> host)
        : host_{host} {}

    void finalStatusDidDisappear() override {
        @autoreleasepool {
            [host_ finalStatusDidDisappear];
        }
    }

    id<FinalStatusVCDelegate> host() const { return host_; }

private:
    const id<FinalStatusVCDelegate> host_;
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
    delete _listener;
    _listener = delegate ? new KivoFinalStatusListener{std::make_shared<Listener>(delegate)} : nullptr;
    native(self).delegate = _listener ? _listener->object : nullptr;
}

// A screen that was taken away has its farewell still to come.
- (void)dealloc {
    if (_listener) {
        constexpr auto farewell = std::chrono::milliseconds{200};
        const auto host = _listener->object->host();
        const std::shared_ptr<void> kept{[host retain], [](void* object) { [static_cast<id>(object) release]; }};
        kivo::platform::services().mainQueue->asyncAfter(farewell, [kept, listener = _listener->object] {});
        delete _listener;
    }
    [super dealloc];
}

KIVO_PROPERTY(ThemeCustomization*, themeObj, setThemeObj)
KIVO_PROPERTY(ActivationResponse*, sessionObject, setSessionObject)

@end
