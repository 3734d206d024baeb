#include "tlv/Tlv.hpp"

namespace kivo::reader {
namespace {

constexpr std::size_t longestTag = 4;
constexpr std::size_t mostObjects = 64;

// The bytes of the tag at the start of `bytes`, or 0 where the tag is cut off or too long.
std::size_t lengthOfTag(ByteView bytes) {
    constexpr std::uint8_t hasMoreBytes = 0x1F;
    constexpr std::uint8_t isContinued = 0x80;
    if (bytes.empty()) {
        return 0;
    }
    if ((bytes[0] & hasMoreBytes) != hasMoreBytes) {
        return 1;
    }
    for (std::size_t at = 1; at < bytes.size() && at < longestTag; ++at) {
        if ((bytes[at] & isContinued) == 0) {
            return at + 1;
        }
    }
    return 0;
}

struct Length {
    std::size_t value;
    std::size_t size;
};

std::optional<Length> lengthAt(ByteView bytes) {
    constexpr std::uint8_t isLong = 0x80;
    if (bytes.empty()) {
        return std::nullopt;
    }
    if ((bytes[0] & isLong) == 0) {
        return Length{.value = bytes[0], .size = 1};
    }
    const std::size_t count = bytes[0] & 0x7F;
    if (count == 0 || count > 4 || bytes.size() <= count) {
        return std::nullopt;
    }
    std::size_t value = 0;
    for (const auto byte : bytes.subspan(1, count)) {
        value = value << 8 | byte;
    }
    return Length{.value = value, .size = 1 + count};
}

} // namespace

std::optional<TlvHead> firstHead(ByteView bytes) {
    const auto tagSize = lengthOfTag(bytes);
    if (tagSize == 0) {
        return std::nullopt;
    }
    std::uint32_t tag = 0;
    for (const auto byte : bytes.first(tagSize)) {
        tag = tag << 8 | byte;
    }
    const auto length = lengthAt(bytes.subspan(tagSize));
    if (!length) {
        return std::nullopt;
    }
    return TlvHead{.tag = tag, .size = tagSize + length->size, .valueSize = length->value};
}

std::optional<Tlv> firstTlv(ByteView bytes) {
    const auto head = firstHead(bytes);
    if (!head || bytes.size() - head->size < head->valueSize) {
        return std::nullopt;
    }
    return Tlv{
        .tag = head->tag, .value = bytes.subspan(head->size, head->valueSize), .size = head->size + head->valueSize};
}

std::optional<std::vector<Tlv>> allTlv(ByteView bytes) {
    std::vector<Tlv> objects;
    while (!bytes.empty()) {
        const auto object = firstTlv(bytes);
        if (!object || objects.size() == mostObjects) {
            return std::nullopt;
        }
        objects.push_back(*object);
        bytes = bytes.subspan(object->size);
    }
    return objects;
}

std::optional<ByteView> valueOf(ByteView bytes, std::uint32_t tag) {
    while (const auto object = firstTlv(bytes)) {
        if (object->tag == tag) {
            return object->value;
        }
        bytes = bytes.subspan(object->size);
    }
    return std::nullopt;
}

void append(Bytes& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes encodedTlv(std::uint32_t tag, ByteView value) {
    Bytes bytes;
    const auto appendNumber = [&bytes](std::size_t number) {
        int shift = 24;
        while (shift > 0 && number >> shift == 0) {
            shift -= 8;
        }
        for (; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<std::uint8_t>(number >> shift));
        }
    };
    appendNumber(tag);
    if (value.size() > 0x7F) {
        const auto at = bytes.size();
        appendNumber(value.size());
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     static_cast<std::uint8_t>(0x80 | (bytes.size() - at)));
    } else {
        bytes.push_back(static_cast<std::uint8_t>(value.size()));
    }
    append(bytes, value);
    return bytes;
}

} // namespace kivo::reader
