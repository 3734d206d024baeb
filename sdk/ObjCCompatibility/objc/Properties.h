#pragma once

#import "Native.h"

#include <kivo/Deployment.hpp>
#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoColor.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

@interface KivoColor (Native)
- (instancetype)initWithNativeColor:(const kivo::platform::Color&)color;
- (kivo::platform::Color)nativeColor;
@end

@interface KivoFont (Native)
- (instancetype)initWithNativeFont:(const kivo::platform::Font&)font;
- (kivo::platform::Font)nativeFont;
@end

/// The members of the library's objects as properties: `shown` converts a member to the type `To` that a host reads,
/// and `take` writes a host's value into the member. Nil stands for an absent value; for a member that cannot be
/// absent, nil is the empty text, the clear colour or the system's font.
namespace kivo::objc {

template <class To>
To shown(const std::string& text) {
    return toText(text);
}

inline void take(NSString* text, std::string& member) {
    member = fromText(text);
}

template <class To>
To shown(const platform::Color& color) {
    return [[[KivoColor alloc] initWithNativeColor:color] autorelease];
}

inline void take(KivoColor* color, platform::Color& member) {
    member = color ? [color nativeColor] : platform::Color::clear();
}

template <class To>
To shown(const platform::Font& font) {
    return [[[KivoFont alloc] initWithNativeFont:font] autorelease];
}

inline void take(KivoFont* font, platform::Font& member) {
    member = font ? [font nativeFont] : platform::Font{};
}

/// Numbers, flags and enumerations.
template <class To, class T>
    requires(std::is_arithmetic_v<T> || std::is_enum_v<T>)
To shown(const T& value) {
    if constexpr (std::is_same_v<To, NSNumber*>) {
        return [NSNumber numberWithDouble:value];
    } else {
        return static_cast<To>(value);
    }
}

inline void take(NSNumber* number, double& member) {
    member = [number doubleValue];
}

inline void take(double number, double& member) {
    member = number;
}

inline void take(BOOL flag, bool& member) {
    member = flag;
}

inline void take(NSInteger number, int& member) {
    member = toInt(number);
}

inline void take(NSInteger number, std::int64_t& member) {
    member = number;
}

template <class E>
    requires std::is_enum_v<E>
void take(NSInteger value, E& member) {
    member = enumeration<E>(value);
}

/// Texts by name.
template <class To, class Compare>
To shown(const std::map<std::string, std::string, Compare>& texts) {
    NSMutableDictionary* const dictionary = [NSMutableDictionary dictionary];
    for (const auto& [name, value] : texts) {
        [dictionary setObject:toText(value) forKey:toText(name)];
    }
    return dictionary;
}

/// Entries that are not text are left out.
template <class Compare>
void take(NSDictionary* dictionary, std::map<std::string, std::string, Compare>& texts) {
    const auto isText = [](id object) { return [object isKindOfClass:[NSString class]]; };
    texts.clear();
    for (id name in dictionary) {
        const id value = [dictionary objectForKey:name];
        if (isText(name) && isText(value)) {
            texts[fromText(name)] = fromText(value);
        }
    }
}

/// The join pages as an array in the order of `SDKEnv`; missing pages are empty.
template <class To>
To shown(const JoinPages& pages) {
    return [NSArray
        arrayWithObjects:toText(pages.PROD), toText(pages.PREPROD), toText(pages.TEST), toText(pages.DEV), nil];
}

inline void take(NSArray* array, JoinPages& pages) {
    pages = {};
    const std::array all{&pages.PROD, &pages.PREPROD, &pages.TEST, &pages.DEV};
    for (std::size_t i = 0; i < std::min<std::size_t>([array count], all.size()); ++i) {
        *all.at(i) = fromText([array objectAtIndex:i]);
    }
}

/// An object of the library, in a wrapper of the class that `To` points to.
template <class To, class T>
To shown(const std::shared_ptr<T>& object) {
    return wrapped<std::remove_pointer_t<To>>(std::const_pointer_cast<std::remove_const_t<T>>(object));
}

template <class T>
void take(KivoObject* wrapper, std::shared_ptr<T>& member) {
    member = heldNative<std::remove_const_t<T>>(wrapper);
}

template <class To, class T>
To shown(const std::optional<T>& value) {
    return value ? shown<To>(*value) : nil;
}

template <class Object, class T>
void take(Object* object, std::optional<T>& member) {
    if (object) {
        take(object, member.emplace());
    } else {
        member.reset();
    }
}

} // namespace kivo::objc

/// The property that is the member `getter` of `native(self)`.
#define KIVO_PROPERTY(type, getter, setter)                                                                            \
    -(type)getter {                                                                                                    \
        return kivo::objc::shown<type>(native(self).getter);                                                           \
    }                                                                                                                  \
    -(void)setter : (type)value {                                                                                      \
        kivo::objc::take(value, native(self).getter);                                                                  \
    }

/// The property that is the pair of functions `getter` and `setter` of `native(self)`.
#define KIVO_FORWARDED(type, getter, setter)                                                                           \
    -(type)getter {                                                                                                    \
        return kivo::objc::shown<type>(native(self).getter());                                                         \
    }                                                                                                                  \
    -(void)setter : (type)value {                                                                                      \
        auto taken = native(self).getter();                                                                            \
        kivo::objc::take(value, taken);                                                                                \
        native(self).setter(std::move(taken));                                                                         \
    }
