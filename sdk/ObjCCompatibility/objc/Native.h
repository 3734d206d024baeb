#pragma once

#import <kivo/objc/KivoView.h>
#include <kivo/platform/ui/View.hpp>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

/// The part that all wrappers share: each wrapper stands for one object of the library.
@interface KivoObject (Native)

/// The wrapper of `native`: an existing wrapper of the object, otherwise the receiver. Nil for null.
- (instancetype)initWithNative:(std::shared_ptr<void>)native;

@end

@interface KivoView (NativeView)

/// The wrapper of a view of any class. The wrapper keeps a pointer to the `View`, which every wrapper of a view
/// expects.
- (instancetype)initWithNativeView:(std::shared_ptr<kivo::platform::View>)view;

@end

namespace kivo::objc {

/// The object behind `wrapper`; null for nil.
std::shared_ptr<void> anyNative(KivoObject* wrapper);

/// The object behind `wrapper`. The pointer keeps the wrapper alive, so that the host gets back the wrapper that it
/// passed in.
std::shared_ptr<void> anyHeldNative(KivoObject* wrapper);

/// `T` is the type for which the wrapper's class was made.
template <class T>
std::shared_ptr<T> native(KivoObject* wrapper) {
    return std::static_pointer_cast<T>(anyNative(wrapper));
}

template <class T>
std::shared_ptr<T> heldNative(KivoObject* wrapper) {
    return std::static_pointer_cast<T>(anyHeldNative(wrapper));
}

/// The wrapper of `native`, autoreleased; nil for null.
template <class Wrapper>
Wrapper* wrapped(std::shared_ptr<void> native) {
    return [[[Wrapper alloc] initWithNative:std::move(native)] autorelease];
}

/// UTF-8; empty for nil.
std::string fromText(NSString* text);

/// Never nil: bytes that are not UTF-8 are read as Latin-1.
NSString* toText(std::string_view text);

constexpr int toInt(NSInteger value) {
    return static_cast<int>(
        std::clamp<NSInteger>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// The C++ enumeration's value of the same integer; a host can pass any integer.
template <class To>
constexpr To enumeration(NSInteger value) {
    return static_cast<To>(toInt(value));
}

} // namespace kivo::objc
