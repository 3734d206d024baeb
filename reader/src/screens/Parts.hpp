#pragma once

#include "page/ZoneReader.hpp"
#include "reading/ChipReading.hpp"

#include <functional>
#include <memory>

namespace kivo::reader {

/// What the screens work with: the chip's reading and the page's. Tests bring their own.
struct ReaderParts {
    /// Starts to read a chip; the keys of the order are those of the person's document.
    std::function<std::shared_ptr<ChipReading>(ChipReadingOrder, ChipReading::Progress, ChipReading::End)> readChip;
    /// Makes a reader of zones, on the thread that uses the reader. Null or empty where the camera is not used.
    std::function<std::unique_ptr<ZoneReader>()> makeZoneReader;
    std::chrono::milliseconds patienceForPerson{std::chrono::minutes{5}};
    /// The order without its key.
    ChipReadingOrder order{};
};

} // namespace kivo::reader
