#pragma once

#include <string>
#include <string_view>

namespace kivo::platform {

/// Puts UTF-16 code units together to UTF-8; halves of pairs that stand alone become U+FFFD.
class Utf16Joiner {
public:
    void append(char16_t unit, std::string& text);

    /// To be called at the end of the units: a half may be waiting for its other one.
    void finish(std::string& text);

private:
    char16_t high_ = 0;
};

/// The text of UTF-16 bytes. The last byte of an odd number is left out.
std::string fromUtf16(std::string_view bytes, bool bigEndian);

} // namespace kivo::platform
