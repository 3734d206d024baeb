#pragma once

#include <kivo/platform/VideoFrame.hpp>
#include <kivo/reader/Card.hpp>

#include <optional>

namespace kivo::reader {

/// The largest pictures that are decoded: in bytes of the encoded form, in pixels a side, and in pixels in all.
inline constexpr std::size_t largestFaceBytes = std::size_t{1} << 20;
inline constexpr int largestFaceSide = 4096;
inline constexpr long long mostFacePixels = 4'194'304;

/// The picture in the format `rgb`. Takes JPEG and JPEG 2000 (as a codestream or in a JP2 file); the bytes say which.
/// Absent for what is neither, broken, or larger than the bounds, which are looked at before memory is taken.
std::optional<platform::VideoFrame> decodedImage(ByteView image);

/// The first face of DG2, decoded.
std::optional<platform::VideoFrame> decodedFace(ByteView dg2);

} // namespace kivo::reader
