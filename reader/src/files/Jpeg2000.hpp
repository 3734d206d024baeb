#pragma once

#include <kivo/platform/VideoFrame.hpp>
#include <kivo/reader/Card.hpp>

#include <optional>

namespace kivo::reader {

/// Whether a picture of this width and height is decoded.
bool isWithinFaceBounds(long long width, long long height);

/// The picture in the format `rgb`; absent for what is no JPEG 2000, broken, or beyond what a face needs: 3 components,
/// 16 tiles and their parts, 32 layers and 10 levels, precincts of at least 32 pixels.
std::optional<platform::VideoFrame> decodedJpeg2000(ByteView image);

} // namespace kivo::reader
