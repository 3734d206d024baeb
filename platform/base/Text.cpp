#include <kivo/platform/Text.hpp>

#include <utf8proc.h>

#include <cstdint>
#include <cstring>

namespace kivo::text {
namespace {

const utf8proc_uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const utf8proc_uint8_t*>(text.data());
}

struct CodePoint {
    utf8proc_int32_t value = 0;
    std::size_t length = 0;
    bool valid = false;
};

CodePoint codePointAt(std::string_view text, std::size_t position) {
    const auto rest = text.substr(position);
    CodePoint point;
    const auto length = utf8proc_iterate(bytesOf(rest), static_cast<utf8proc_ssize_t>(rest.size()), &point.value);
    point.valid = length > 0;
    point.length = point.valid ? static_cast<std::size_t>(length) : 1;
    if (!point.valid) {
        point.value = 0xFFFD;
    }
    return point;
}

/// The length of a part at the beginning without bytes of longer sequences. Eight bytes are looked at together.
std::size_t asciiLength(std::string_view text) {
    constexpr std::uint64_t tops = 0x8080'8080'8080'8080;
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & tops) != 0) {
            break;
        }
    }
    return length;
}

/// Where the character that begins at `position` ends.
std::size_t characterEnd(std::string_view text, std::size_t position) {
    utf8proc_int32_t state = 0;
    auto point = codePointAt(text, position);
    for (position += point.length; position < text.size();) {
        const auto next = codePointAt(text, position);
        if (!point.valid || !next.valid || utf8proc_grapheme_break_stateful(point.value, next.value, &state)) {
            break;
        }
        point = next;
        position += next.length;
    }
    return position;
}

bool isLineEnd(utf8proc_int32_t value) {
    const auto category = utf8proc_category(value);
    return (value >= '\n' && value <= '\r') || value == 0x85 || category == UTF8PROC_CATEGORY_ZL ||
           category == UTF8PROC_CATEGORY_ZP;
}

bool isBlank(utf8proc_int32_t value) {
    return value == '\t' || utf8proc_category(value) == UTF8PROC_CATEGORY_ZS;
}

} // namespace

bool isUtf8(std::string_view bytes) {
    for (auto position = asciiLength(bytes); position < bytes.size();) {
        const auto point = codePointAt(bytes, position);
        if (!point.valid) {
            return false;
        }
        position += point.length;
        if (point.length == 1) {
            position += asciiLength(bytes.substr(position));
        }
    }
    return true;
}

std::optional<std::string_view> firstCharacters(std::string_view text, std::size_t count) {
    std::size_t seen = 0;
    for (std::size_t position = 0; position < text.size(); position = characterEnd(text, position)) {
        if (seen++ == count) {
            return text.substr(0, position);
        }
    }
    return seen >= count ? std::optional{text} : std::nullopt;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t position = 0; position < text.size(); position = characterEnd(text, position)) {
        ++count;
    }
    return count;
}

std::string singleLine(std::string_view text) {
    std::string line;
    std::size_t lastInk = 0;
    for (std::size_t position = 0; position < text.size();) {
        const auto point = codePointAt(text, position);
        const bool isInk = !isLineEnd(point.value) && !isBlank(point.value);
        if (isInk || (!line.empty() && !isLineEnd(point.value))) {
            line += text.substr(position, point.length);
        }
        if (isInk) {
            lastInk = line.size();
        }
        position += point.length;
    }
    line.resize(lastInk);
    return line;
}

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> all;
    for (std::size_t position = 0; position < text.size();) {
        const auto end = characterEnd(text, position);
        all.push_back(text.substr(position, end - position));
        position = end;
    }
    return all;
}

} // namespace kivo::text
