#include "files/Jpeg2000.hpp"

#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

namespace kivo::reader {
namespace {

constexpr std::size_t mostComponents = 4;
constexpr long long mostTiles = 16;
constexpr std::size_t mostTileParts = 64;
constexpr std::size_t mostMarkers = 64;
constexpr std::size_t mostLayers = 32;
constexpr std::size_t mostLevels = 10;
constexpr std::size_t leastPrecinct = 5; // a power of 2

namespace marker {
constexpr std::size_t size = 0xFF51, coding = 0xFF52, codingOfComponent = 0xFF53, progression = 0xFF5F, tile = 0xFF90,
                      data = 0xFF93;
}

std::size_t numberAt(ByteView bytes, std::size_t at, std::size_t size) {
    std::size_t number = 0;
    for (const auto byte : bytes.subspan(at, size)) {
        number = number << 8 | byte;
    }
    return number;
}

bool startsWith(ByteView bytes, std::initializer_list<std::uint8_t> start) {
    return bytes.size() >= start.size() && std::ranges::equal(bytes.first(start.size()), start);
}

// The codestream in a JP2 file, or the bytes themselves where they are one.
std::optional<ByteView> codestreamIn(ByteView image) {
    if (startsWith(image, {0xFF, 0x4F, 0xFF, 0x51})) {
        return image;
    }
    if (!startsWith(image, {0, 0, 0, 12, 'j', 'P', ' ', ' '})) {
        return std::nullopt;
    }
    constexpr std::size_t mostBoxes = 32;
    constexpr std::size_t head = 8;
    for (std::size_t box = 0; box < mostBoxes && image.size() > head; ++box) {
        auto size = numberAt(image, 0, 4);
        size = size == 0 ? image.size() : size; // up to the end
        if (size < head || size > image.size()) {
            return std::nullopt;
        }
        if (std::ranges::equal(image.subspan(4, 4), std::string_view{"jp2c"})) {
            return image.subspan(head, size - head);
        }
        image = image.subspan(size);
    }
    return std::nullopt;
}

bool isSizeAllowed(ByteView segment) {
    constexpr std::size_t fixed = 36;
    if (segment.size() < fixed) {
        return false;
    }
    const auto number = [segment](std::size_t at) { return static_cast<long long>(numberAt(segment, at, 4)); };
    const auto right = number(2);
    const auto bottom = number(6);
    const auto left = number(10);
    const auto top = number(14);
    const auto tileWidth = number(18);
    const auto tileHeight = number(22);
    const auto tilesLeft = number(26);
    const auto tilesTop = number(30);
    const auto components = numberAt(segment, 34, 2);
    if (!isWithinFaceBounds(right - left, bottom - top) || tileWidth == 0 || tileHeight == 0 || tilesLeft > left ||
        tilesTop > top || components == 0 || components > mostComponents || segment.size() != fixed + components * 3) {
        return false;
    }
    const auto across = (right - tilesLeft + tileWidth - 1) / tileWidth;
    const auto down = (bottom - tilesTop + tileHeight - 1) / tileHeight;
    if (across > mostTiles || down > mostTiles || across * down > mostTiles) {
        return false;
    }
    for (std::size_t i = 0; i < components; ++i) {
        const auto depth = (segment[fixed + i * 3] & 0x7F) + 1;
        const auto dx = segment[fixed + i * 3 + 1];
        const auto dy = segment[fixed + i * 3 + 2];
        if (depth > 16 || dx == 0 || dx > 4 || dy == 0 || dy > 4) {
            return false;
        }
    }
    return true;
}

bool isCodingAllowed(ByteView segment) {
    constexpr std::size_t fixed = 10;
    if (segment.size() < fixed) {
        return false;
    }
    const auto layers = numberAt(segment, 2, 2);
    const std::size_t levels = segment[5];
    if (layers == 0 || layers > mostLayers || levels > mostLevels) {
        return false;
    }
    if ((segment[0] & 1) == 0) {
        return segment.size() == fixed; // the largest precincts
    }
    const auto precincts = segment.subspan(fixed);
    return precincts.size() == levels + 1 && std::ranges::all_of(precincts, [](std::uint8_t exponents) {
               return (exponents & 0x0F) >= leastPrecinct && (exponents >> 4) >= leastPrecinct;
           });
}

// Whether the segments of a header, up to the next tile or the data, are within the bounds. Leaves `rest` at the end of
// the header.
bool isHeaderAllowed(ByteView& rest, bool isOfTile) {
    bool hasCoding = isOfTile;
    for (std::size_t i = 0; i < mostMarkers && rest.size() >= 4; ++i) {
        const auto code = numberAt(rest, 0, 2);
        if (code == (isOfTile ? marker::data : marker::tile)) {
            return hasCoding;
        }
        const auto size = numberAt(rest, 2, 2);
        if (size < 2 || size > rest.size() - 2) {
            return false;
        }
        const auto segment = rest.subspan(4, size - 2);
        // A face needs one way of coding for the whole picture.
        if (code == marker::codingOfComponent || code == marker::progression || (code == marker::coding && hasCoding) ||
            (code == marker::coding && !isCodingAllowed(segment)) || code == marker::size) {
            return false;
        }
        hasCoding = hasCoding || code == marker::coding;
        rest = rest.subspan(2 + size);
    }
    return false;
}

// Looks at the whole codestream before the decoder does: what it would take memory and time for is written in few
// bytes.
bool isAllowed(ByteView stream) {
    if (!startsWith(stream, {0xFF, 0x4F, 0xFF, 0x51}) || stream.size() < 6) {
        return false;
    }
    auto rest = stream.subspan(4);
    const auto size = numberAt(rest, 0, 2);
    if (size < 2 || size > rest.size() || !isSizeAllowed(rest.subspan(2, size - 2))) {
        return false;
    }
    rest = rest.subspan(size);
    if (!isHeaderAllowed(rest, false)) {
        return false;
    }
    constexpr std::size_t headOfTile = 12;
    for (std::size_t part = 0; part < mostTileParts; ++part) {
        if (rest.size() < headOfTile || numberAt(rest, 0, 2) != marker::tile) {
            return part > 0;
        }
        auto length = numberAt(rest, 6, 4);
        length = length == 0 ? rest.size() : length;
        if (numberAt(rest, 2, 2) != 10 || length < headOfTile || length > rest.size()) {
            return false;
        }
        auto header = rest.subspan(headOfTile, length - headOfTile);
        if (!isHeaderAllowed(header, true)) {
            return false;
        }
        rest = rest.subspan(length);
    }
    return false;
}

struct Reading {
    ByteView bytes;
    std::size_t at = 0;
};

OPJ_SIZE_T readSome(void* buffer, OPJ_SIZE_T size, void* user) {
    auto& reading = *static_cast<Reading*>(user);
    const auto count = std::min<std::size_t>(size, reading.bytes.size() - reading.at);
    if (count == 0) {
        return static_cast<OPJ_SIZE_T>(-1);
    }
    std::memcpy(buffer, reading.bytes.data() + reading.at, count);
    reading.at += count;
    return count;
}

OPJ_OFF_T skipSome(OPJ_OFF_T size, void* user) {
    auto& reading = *static_cast<Reading*>(user);
    const auto left = static_cast<OPJ_OFF_T>(reading.bytes.size() - reading.at);
    const auto count = std::clamp<OPJ_OFF_T>(size, 0, left);
    reading.at += static_cast<std::size_t>(count);
    return count;
}

OPJ_BOOL seek(OPJ_OFF_T to, void* user) {
    auto& reading = *static_cast<Reading*>(user);
    if (to < 0 || static_cast<std::size_t>(to) > reading.bytes.size()) {
        return OPJ_FALSE;
    }
    reading.at = static_cast<std::size_t>(to);
    return OPJ_TRUE;
}

template <auto free>
struct JpegFreed {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

using Codec = std::unique_ptr<opj_codec_t, JpegFreed<opj_destroy_codec>>;
using Image = std::unique_ptr<opj_image_t, JpegFreed<opj_image_destroy>>;
using Stream = std::unique_ptr<opj_stream_t, JpegFreed<opj_stream_destroy>>;

Image decoded(ByteView bytes) {
    Reading reading{.bytes = bytes};
    const Stream stream{opj_stream_create(bytes.size(), OPJ_TRUE)};
    const Codec codec{opj_create_decompress(OPJ_CODEC_J2K)};
    opj_dparameters_t parameters{};
    opj_set_default_decoder_parameters(&parameters);
    if (!stream || !codec || !opj_setup_decoder(codec.get(), &parameters)) {
        return nullptr;
    }
    opj_stream_set_user_data(stream.get(), &reading, nullptr);
    opj_stream_set_user_data_length(stream.get(), bytes.size());
    opj_stream_set_read_function(stream.get(), readSome);
    opj_stream_set_skip_function(stream.get(), skipSome);
    opj_stream_set_seek_function(stream.get(), seek);
    opj_image_t* raw = nullptr;
    const bool hasHeader = opj_read_header(stream.get(), codec.get(), &raw) == OPJ_TRUE;
    Image image{raw};
    if (!hasHeader || !opj_decode(codec.get(), stream.get(), image.get()) ||
        !opj_end_decompress(codec.get(), stream.get())) {
        return nullptr;
    }
    return image;
}

// The value of a component at a pixel of the picture, in 8 bits.
std::uint8_t valueAt(const opj_image_comp_t& component, long long x, long long y) {
    const auto column = std::min<long long>(x / component.dx, component.w - 1);
    const auto row = std::min<long long>(y / component.dy, component.h - 1);
    long long value = component.data[row * component.w + column];
    if (component.sgnd != 0) {
        value += 1LL << (component.prec - 1);
    }
    value = component.prec > 8 ? value >> (component.prec - 8) : value * 255 / ((1LL << component.prec) - 1);
    return static_cast<std::uint8_t>(std::clamp<long long>(value, 0, 255));
}

} // namespace

std::optional<platform::VideoFrame> decodedJpeg2000(ByteView bytes) {
    const auto stream = codestreamIn(bytes);
    if (!stream || !isAllowed(*stream)) {
        return std::nullopt;
    }
    const auto image = decoded(*stream);
    if (!image || !isWithinFaceBounds(static_cast<long long>(image->x1) - image->x0,
                                      static_cast<long long>(image->y1) - image->y0)) {
        return std::nullopt;
    }
    const std::span components{image->comps, image->numcomps};
    if (components.empty() || std::ranges::any_of(components, [](const auto& component) {
            return component.data == nullptr || component.w == 0 || component.h == 0 || component.prec == 0;
        })) {
        return std::nullopt;
    }
    platform::VideoFrame frame{.width = static_cast<int>(image->x1 - image->x0),
                               .height = static_cast<int>(image->y1 - image->y0),
                               .format = platform::VideoFrame::Format::rgb,
                               .bytes = {}};
    frame.bytes.reserve(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 3);
    const bool isGray = components.size() < 3;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            for (std::size_t i = 0; i < 3; ++i) {
                frame.bytes.push_back(valueAt(components[isGray ? 0 : i], x, y));
            }
        }
    }
    return frame;
}

} // namespace kivo::reader
