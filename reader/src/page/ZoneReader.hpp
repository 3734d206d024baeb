#pragma once

#include "files/Zone.hpp"

#include <kivo/platform/VideoFrame.hpp>

#include <memory>
#include <optional>

namespace kivo::reader {

/// Finds the machine-readable zone in the pictures of a camera. One thread at a time.
class ZoneReader {
public:
    static std::unique_ptr<ZoneReader> make();
    virtual ~ZoneReader() = default;

    /// What one picture gave.
    struct Sight {
        /// The zone, with all its check digits.
        std::optional<Zone> zone{};
        /// Whether the picture is too dark to read, so that a light helps.
        bool isTooDark = false;
    };

    /// Looks at a picture: at most 8192 pixels a side, and for at most about a second of the processor's time. A page
    /// may be turned by up to 15 degrees or lie upside down.
    virtual Sight look(const platform::VideoFrame& frame) = 0;
};

} // namespace kivo::reader
