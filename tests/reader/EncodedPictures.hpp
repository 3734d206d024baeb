#pragma once

#include <kivo/platform/VideoFrame.hpp>
#include <kivo/reader/Card.hpp>

namespace kivo::reader {

/// Pictures (`rgb`) as chips hold them.
Bytes jpegOf(const platform::VideoFrame& frame);

/// A codestream without loss; in tiles of this many pixels a side, or in one.
Bytes jpeg2000Of(const platform::VideoFrame& frame, int tile = 0);

/// The codestream in a file of boxes.
Bytes jp2Of(const Bytes& codestream);

} // namespace kivo::reader
