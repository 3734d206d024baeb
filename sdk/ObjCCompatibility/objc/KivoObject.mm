#import "Native.h"

#include <mutex>
#include <unordered_map>

struct KivoNative {
    std::shared_ptr<void> object;
};

namespace {

/// The wrappers that are alive, by what they stand for. Holds no reference to them.
struct Wrappers {
    std::mutex mutex;
    std::unordered_map<const void*, KivoObject*> alive;
};

// Never destroyed: the library may let go of wrappers while the process exits.
Wrappers& wrappers() {
    static auto* const all = new Wrappers;
    return *all;
}

} // namespace

@implementation KivoObject

- (instancetype)init {
    NSString* const name = NSStringFromClass([self class]);
    [self release];
    [NSException raise:NSInvalidArgumentException format:@"%@ has no init without arguments", name];
    return nil;
}

- (instancetype)initWithNative:(std::shared_ptr<void>)native {
    self = [super init];
    if (!self) {
        return nil;
    }
    KivoObject* known = nil;
    if (native) {
        auto& all = wrappers();
        const std::scoped_lock lock{all.mutex};
        const auto [entry, isNew] = all.alive.try_emplace(native.get(), self);
        if (isNew) {
            _native = new KivoNative{std::move(native)};
            return self;
        }
        known = [entry->second retain];
    }
    [self release];
    return known;
}

// The last release and a look-up of the same object must not meet: what is about to go is not found any more.
- (oneway void)release {
    auto& all = wrappers();
    {
        const std::scoped_lock lock{all.mutex};
        if ([self retainCount] > 1) {
            [super release];
            return;
        }
        if (_native) {
            all.alive.erase(_native->object.get());
        }
    }
    [super release];
}

- (void)dealloc {
    delete _native;
    [super dealloc];
}

std::shared_ptr<void> kivo::objc::anyNative(KivoObject* wrapper) {
    return wrapper ? wrapper->_native->object : nullptr;
}

@end

std::shared_ptr<void> kivo::objc::anyHeldNative(KivoObject* wrapper) {
    if (!wrapper) {
        return nullptr;
    }
    const std::shared_ptr<void> hold{[wrapper retain], [](void* held) {
                                         @autoreleasepool {
                                             [static_cast<KivoObject*>(held) release];
                                         }
                                     }};
    return {hold, anyNative(wrapper).get()};
}
