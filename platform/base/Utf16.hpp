#pragma once

#include <string>
#include <string_view>

namespace kivo::platform {

/// Turns UTF-16 code units into UTF-8. Half a surrogate pair becomes U+FFFD.
class Utf16Joiner {
public:
    void append(char16_t unit, std::string& text);

    /// Must be called after the last unit, which may be the first half of a pair.
    void finish(std::string& text);

private:
    char16_t high_ = 0;
};

/// The text of UTF-16 bytes, in UTF-8. The last byte of an odd number of bytes is left out.
std::string fromUtf16(std::string_view bytes, bool bigEndian);

} // namespace kivo::platform
