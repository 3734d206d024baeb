#pragma once

#import <Foundation/Foundation.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

namespace kivo::objc {

/// UTF-8; empty for nil.
std::string fromText(NSString* text);

/// Never nil: bytes that are no UTF-8 are read as Latin-1.
NSString* toText(std::string_view text);

constexpr int toInt(NSInteger value) {
    return static_cast<int>(
        std::clamp<NSInteger>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// The C++ enumeration's value of the same integer; a host can pass any.
template <class To>
constexpr To enumeration(NSInteger value) {
    return static_cast<To>(toInt(value));
}

} // namespace kivo::objc
