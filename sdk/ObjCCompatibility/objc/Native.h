#pragma once

#import <kivo/objc/KivoObject.h>

#include <memory>
#include <utility>

/// What the wrappers share: each stands for one object of the library.
@interface KivoObject (Native)

/// The wrapper of `native`: the one that is alive already, else the receiver. Nil for null.
- (instancetype)initWithNative:(std::shared_ptr<void>)native;

@end

namespace kivo::objc {

/// The object behind `wrapper`; null for nil.
std::shared_ptr<void> anyNative(KivoObject* wrapper);

/// The same, but the wrapper lives as long as the pointer: the library gives back the very object that it was given.
std::shared_ptr<void> anyHeldNative(KivoObject* wrapper);

/// `T` is the type that the wrapper's class was made with.
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

} // namespace kivo::objc
