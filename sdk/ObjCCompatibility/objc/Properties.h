#pragma once

#import "Native.h"
#import "Values.h"

#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoColor.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

@interface KivoColor (Native)
+ (KivoColor*)colorWithNative:(const kivo::platform::Color&)color;
- (kivo::platform::Color)nativeColor;
@end

@interface KivoFont (Native)
+ (KivoFont*)fontWithNative:(const kivo::platform::Font&)font;
- (kivo::platform::Font)nativeFont;
@end

/// How members of the library's objects look as properties: `shown` makes what a host reads, and `take` puts what it
/// writes into the member. Nil stands for an absent value, or for the empty or clear one where none can be absent.
namespace kivo::objc {

inline NSString* shown(const std::string& text) {
    return toText(text);
}

inline void take(NSString* text, std::string& member) {
    member = fromText(text);
}

inline KivoColor* shown(const platform::Color& color) {
    return [KivoColor colorWithNative:color];
}

inline void take(KivoColor* color, platform::Color& member) {
    member = color ? [color nativeColor] : platform::Color::clear();
}

inline KivoFont* shown(const platform::Font& font) {
    return [KivoFont fontWithNative:font];
}

inline void take(KivoFont* font, platform::Font& member) {
    member = font ? [font nativeFont] : platform::Font{};
}

inline NSNumber* shown(double number) {
    return [NSNumber numberWithDouble:number];
}

inline void take(NSNumber* number, double& member) {
    member = [number doubleValue];
}

template <class T>
auto shown(const std::optional<T>& value) -> decltype(shown(*value)) {
    return value ? shown(*value) : nil;
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

/// A property that is a member of `native(self)`, a number or an enumeration.
#define KIVO_NUMBER(type, getter, setter)                                                                              \
    -(type)getter {                                                                                                    \
        return static_cast<type>(native(self).getter);                                                                 \
    }                                                                                                                  \
    -(void)setter : (type)value {                                                                                      \
        native(self).getter = static_cast<std::remove_reference_t<decltype(native(self).getter)>>(value);              \
    }

/// One that is a text, a colour, a font or an optional value.
#define KIVO_VALUE(type, getter, setter)                                                                               \
    -(type*)getter {                                                                                                   \
        return kivo::objc::shown(native(self).getter);                                                                 \
    }                                                                                                                  \
    -(void)setter : (type*)value {                                                                                     \
        kivo::objc::take(value, native(self).getter);                                                                  \
    }

/// One that is a shared object of the library, in a wrapper of class `type`.
#define KIVO_OBJECT(type, getter, setter)                                                                              \
    -(type*)getter {                                                                                                   \
        using Object = std::remove_const_t<decltype(native(self).getter)::element_type>;                               \
        return kivo::objc::wrapped<type>(std::const_pointer_cast<Object>(native(self).getter));                        \
    }                                                                                                                  \
    -(void)setter : (type*)value {                                                                                     \
        using Object = std::remove_const_t<decltype(native(self).getter)::element_type>;                               \
        native(self).getter = kivo::objc::heldNative<Object>(value);                                                   \
    }
