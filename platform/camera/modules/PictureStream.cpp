#include "PictureStream.hpp"

#include <algorithm>
#include <bit>
#include <string_view>

namespace kivo::platform {
namespace {

/// Where the header of a format has the two sides, one behind the other.
struct Layout {
    std::string_view signature;
    std::size_t position;
    std::size_t size;
    std::endian order;
};

constexpr std::array layouts{Layout{"\x89PNG\r\n\x1A\n", 16, 4, std::endian::big},
                             Layout{"GIF8", 6, 2, std::endian::little}};
constexpr std::size_t longestHeader = 24;

std::uint32_t number(std::span<const std::uint8_t> bytes, std::endian order) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value = value << 8 | bytes[order == std::endian::big ? i : bytes.size() - 1 - i];
    }
    return value;
}

// The markers of JPEG (ITU-T T.81, table B.1).
constexpr std::uint8_t startOfPicture = 0xD8;
constexpr std::uint8_t endOfPicture = 0xD9;

bool standsAlone(std::uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
}

bool isFrameHeader(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

} // namespace

void PictureStream::read(std::span<const std::uint8_t> bytes) {
    if (!isJpeg_) {
        const auto wanted = std::min(bytes.size(), longestHeader - beginning_.size());
        beginning_.insert(beginning_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(wanted));
        bytes = bytes.subspan(wanted);
        readBeginning();
    }
    if (isJpeg_.value_or(false)) {
        std::ranges::for_each(bytes, [this](std::uint8_t byte) { readJpeg(byte); });
    }
}

void PictureStream::readBeginning() {
    if (beginning_.size() < longestHeader) {
        return;
    }
    isJpeg_ = beginning_[0] == 0xFF && beginning_[1] == startOfPicture;
    if (*isJpeg_) {
        std::ranges::for_each(beginning_, [this](std::uint8_t byte) { readJpeg(byte); });
        return;
    }
    const auto isSame = [](std::uint8_t byte, char character) { return byte == static_cast<std::uint8_t>(character); };
    for (const auto& [signature, position, size, order] : layouts) {
        if (std::ranges::equal(std::span{beginning_}.first(signature.size()), signature, isSame)) {
            const auto sides = std::span{beginning_}.subspan(position, 2 * size);
            found_(number(sides.first(size), order), number(sides.last(size), order));
        }
    }
}

void PictureStream::readJpeg(std::uint8_t byte) {
    if (isWithinSegment_) {
        readSegment(byte);
        return;
    }
    const bool isMarker = previous_ == 0xFF && byte != 0x00 && byte != 0xFF;
    previous_ = byte;
    if (isMarker) {
        readMarker(byte);
    }
}

void PictureStream::readMarker(std::uint8_t marker) {
    if (marker == startOfPicture) {
        isWithinPicture_ = true;
    } else if (marker == endOfPicture) {
        hasWholePicture_ = hasWholePicture_ || isWithinPicture_;
        isWithinPicture_ = false;
    } else if (isWithinPicture_ && !standsAlone(marker)) {
        marker_ = marker;
        position_ = 0;
        isWithinSegment_ = true;
    }
}

void PictureStream::readSegment(std::uint8_t byte) {
    if (position_ < segment_.size()) {
        segment_[position_] = byte;
    }
    ++position_;
    const std::span segment{segment_};
    if (position_ == segment_.size() && isFrameHeader(marker_)) {
        found_(number(segment.subspan(5, 2), std::endian::big), number(segment.subspan(3, 2), std::endian::big));
    }
    // The length counts itself.
    if (position_ >= 2 && position_ >= number(segment.first(2), std::endian::big)) {
        isWithinSegment_ = false;
        previous_ = 0;
    }
}

} // namespace kivo::platform
