#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <vector>

namespace kivo::platform {

/// Finds machine-readable codes in a picture. One thread at a time.
class CodeReader {
public:
    virtual ~CodeReader() = default;

    /// The codes of these types that could be read, the one nearest to the middle first. The frame must be whole.
    virtual std::vector<MetadataObject> read(const VideoFrame& frame, const std::vector<MetadataObjectType>& types) = 0;
};

} // namespace kivo::platform
