#pragma once

#include <kivo/reader/Card.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kivo::reader {

/// A data object of BER-TLV. The value belongs to the bytes that were read.
struct Tlv {
    /// The tag with all its bytes, such as 0x7F49.
    std::uint32_t tag = 0;
    ByteView value{};
    /// The number of bytes that the whole object takes, tag and length included.
    std::size_t size = 0;
};

/// The start of a data object.
struct TlvHead {
    std::uint32_t tag = 0;
    /// The number of bytes that tag and length take, and those of the value.
    std::size_t size = 0;
    std::size_t valueSize = 0;
};

/// Tag and length of the first object, of whose value `bytes` may hold nothing yet; absent as for `firstTlv`.
std::optional<TlvHead> firstHead(ByteView bytes);

/// The first object of `bytes`; absent where tag or length are cut off, longer than four and five bytes, indefinite, or
/// lead past the end. What follows the object is left alone.
std::optional<Tlv> firstTlv(ByteView bytes);

/// All objects of `bytes`, at most 64; absent where anything but whole objects is found.
std::optional<std::vector<Tlv>> allTlv(ByteView bytes);

/// The value of the first object with the tag among the objects of `bytes`; absent where there is none.
std::optional<ByteView> valueOf(ByteView bytes, std::uint32_t tag);

/// Puts more bytes at the end of `bytes`.
void append(Bytes& bytes, ByteView more);

/// An object with the tag and the value, its length in the shortest form.
Bytes encodedTlv(std::uint32_t tag, ByteView value);

} // namespace kivo::reader
