#pragma once

#include <kivo/simulator/CountryAuthority.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// The simulated chip. Shares no code with a reader, so that a test compares two sources.
namespace kivo::simulator::chip {

using View = std::span<const std::uint8_t>;

/// A data object of BER-TLV. The value belongs to the bytes that were read.
struct DataObject {
    std::uint32_t tag = 0;
    View value{};
};

/// All objects of the bytes; absent where anything but whole objects is found, or more than 32.
std::optional<std::vector<DataObject>> dataObjects(View bytes);

/// The value of the first object with the tag; absent where there is none.
std::optional<View> valueOf(const std::vector<DataObject>& objects, std::uint32_t tag);

/// An object with the tag and the value.
Bytes object(std::uint32_t tag, View value);

/// The same, with a text as value.
Bytes object(std::uint32_t tag, std::string_view value);

/// The parts, one after the other.
Bytes joined(std::initializer_list<View> parts);

inline Bytes copied(View bytes) {
    return {bytes.begin(), bytes.end()};
}

inline View viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The number as that many bytes, the highest first.
Bytes bigEndian(std::uint64_t number, std::size_t bytes);

} // namespace kivo::simulator::chip
