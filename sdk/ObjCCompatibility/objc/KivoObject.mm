#import "Native.h"
#import "Value.h"

#include <mutex>
#include <unordered_map>

struct KivoNative {
    std::shared_ptr<void> object;
};

namespace {

/// The existing wrappers by the objects that they stand for; holds no reference to the wrappers.
struct Wrappers {
    std::mutex mutex;
    std::unordered_map<const void*, KivoObject*> alive;
};

// Never destroyed, because the library may release wrappers while the process exits.
Wrappers& wrappers() {
    static auto* const all = new Wrappers;
    return *all;
}

} // namespace

@implementation KivoObject

KIVO_NO_INIT
KIVO_NO_ARCHIVE

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

// The last release and a look-up exclude each other, so that a look-up never finds a wrapper that is being released.
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
    return wrapper && wrapper->_native ? wrapper->_native->object : nullptr;
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

namespace kivo::objc {

std::string fromText(NSString* text) {
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return bytes ? std::string{static_cast<const char*>([bytes bytes]), [bytes length]} : std::string{};
}

NSString* toText(std::string_view text) {
    for (const auto encoding : {NSUTF8StringEncoding, NSISOLatin1StringEncoding}) {
        NSString* const decoded = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:encoding];
        if (decoded) {
            return [decoded autorelease];
        }
    }
    return @"";
}

} // namespace kivo::objc
