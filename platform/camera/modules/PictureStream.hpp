#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace kivo::platform {

/// Follows the pictures of a compressed stream by their headers, without decoding: JPEG pictures one after the other,
/// or one PNG or GIF file. Finds nothing in other streams.
class PictureStream {
public:
    /// Takes the width and the height that a picture's header names.
    using Found = std::function<void(std::uint32_t width, std::uint32_t height)>;

    /// `isJpeg`: the stream's reader takes JPEG only, and passes over the bytes between pictures. Otherwise the first
    /// bytes of the stream tell its format.
    PictureStream(bool isJpeg, Found found)
        : isJpeg_{isJpeg ? std::optional{true} : std::nullopt}
        , found_{std::move(found)} {}

    /// Reads on, and calls `found` for each header that ends in these bytes.
    void read(std::span<const std::uint8_t> bytes);

    /// Whether the stream's first JPEG picture has begun and has not ended.
    bool isWithinFirstPicture() const { return isWithinPicture_ && !hasWholePicture_; }

private:
    void readBeginning();
    void readJpeg(std::uint8_t byte);
    void readMarker(std::uint8_t marker);
    void readSegment(std::uint8_t byte);

    /// Absent until the first bytes have told.
    std::optional<bool> isJpeg_;
    const Found found_;
    std::vector<std::uint8_t> beginning_;

    // JPEG: a picture is a row of segments, each of a marker and mostly a length, with the compressed pixels among
    // them.
    bool isWithinPicture_ = false;
    bool hasWholePicture_ = false;
    std::uint8_t previous_ = 0;
    std::uint8_t marker_ = 0;
    bool isWithinSegment_ = false;
    std::size_t position_ = 0;
    /// Length, precision, height and width.
    std::array<std::uint8_t, 7> segment_{};
};

} // namespace kivo::platform
