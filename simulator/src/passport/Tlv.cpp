#include "passport/Tlv.hpp"

#include <algorithm>
#include <ranges>

namespace kivo::simulator::chip {
namespace {

constexpr std::size_t mostObjects = 32;

/// Takes the first byte; absent at the end.
std::optional<std::uint8_t> takeByte(View& bytes) {
    if (bytes.empty()) {
        return std::nullopt;
    }
    const auto first = bytes.front();
    bytes = bytes.subspan(1);
    return first;
}

std::optional<std::uint32_t> takeTag(View& bytes) {
    auto next = takeByte(bytes);
    if (!next) {
        return std::nullopt;
    }
    std::uint32_t tag = *next;
    if ((tag & 0x1FU) != 0x1FU) {
        return tag;
    }
    for (int more = 0; more < 2; ++more) {
        next = takeByte(bytes);
        if (!next) {
            return std::nullopt;
        }
        tag = tag << 8U | *next;
        if ((*next & 0x80U) == 0) {
            return tag;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> takeLength(View& bytes) {
    const auto first = takeByte(bytes);
    if (!first || *first < 0x80U) {
        return first;
    }
    const auto count = *first & 0x7FU;
    if (count == 0 || count > 3) {
        return std::nullopt;
    }
    std::size_t length = 0;
    for (unsigned each = 0; each < count; ++each) {
        const auto next = takeByte(bytes);
        if (!next) {
            return std::nullopt;
        }
        length = length << 8U | *next;
    }
    return length;
}

} // namespace

std::optional<std::vector<DataObject>> dataObjects(View bytes) {
    std::vector<DataObject> objects;
    while (!bytes.empty()) {
        const auto tag = takeTag(bytes);
        const auto length = takeLength(bytes);
        if (!tag || !length || *length > bytes.size() || objects.size() == mostObjects) {
            return std::nullopt;
        }
        objects.push_back({.tag = *tag, .value = bytes.first(*length)});
        bytes = bytes.subspan(*length);
    }
    return objects;
}

std::optional<View> valueOf(const std::vector<DataObject>& objects, std::uint32_t tag) {
    const auto found = std::ranges::find(objects, tag, &DataObject::tag);
    return found == objects.end() ? std::nullopt : std::optional{found->value};
}

Bytes object(std::uint32_t tag, View value) {
    Bytes bytes;
    for (const unsigned shift : {16U, 8U, 0U}) {
        if (const auto part = tag >> shift; part != 0) {
            bytes.push_back(static_cast<std::uint8_t>(part));
        }
    }
    if (value.size() >= 0x80) {
        const std::size_t count = value.size() > 0xFFFF ? 3 : value.size() > 0xFF ? 2 : 1;
        bytes.push_back(static_cast<std::uint8_t>(0x80U | count));
        const auto length = bigEndian(value.size(), count);
        bytes.insert(bytes.end(), length.begin(), length.end());
    } else {
        bytes.push_back(static_cast<std::uint8_t>(value.size()));
    }
    bytes.insert(bytes.end(), value.begin(), value.end());
    return bytes;
}

Bytes object(std::uint32_t tag, std::string_view value) {
    return object(tag, viewOf(value));
}

Bytes joined(std::initializer_list<View> parts) {
    Bytes bytes;
    for (const auto part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

Bytes bigEndian(std::uint64_t number, std::size_t bytes) {
    Bytes result(bytes);
    for (auto& byte : result | std::views::reverse) {
        byte = static_cast<std::uint8_t>(number);
        number >>= 8U;
    }
    return result;
}

} // namespace kivo::simulator::chip
