#include "platform/base/Utf16.hpp"

#include <utf8proc.h>

#include <utility>

namespace kivo::platform {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

void encode(char32_t character, std::string& text) {
    utf8proc_uint8_t bytes[4];
    const auto size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(character), bytes);
    text.append(bytes, bytes + size);
}

} // namespace

void Utf16Joiner::append(char16_t unit, std::string& text) {
    const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
    if (high_ && isLow) {
        const auto high = static_cast<char32_t>(std::exchange(high_, 0));
        encode(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00U), text);
        return;
    }
    finish(text);
    if (unit >= 0xD800 && unit <= 0xDBFF) {
        high_ = unit;
    } else {
        encode(isLow ? replacementCharacter : unit, text);
    }
}

void Utf16Joiner::finish(std::string& text) {
    if (std::exchange(high_, 0)) {
        encode(replacementCharacter, text);
    }
}

std::string fromUtf16(std::string_view bytes, bool bigEndian) {
    std::string text;
    Utf16Joiner joiner;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        joiner.append(static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first), text);
    }
    joiner.finish(text);
    return text;
}

} // namespace kivo::platform
