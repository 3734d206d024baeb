#pragma once

#include "page/Shades.hpp"

#include <memory>
#include <string>

namespace tesseract {
class TessBaseAPI;
}

namespace kivo::reader {

/// Reads single lines in the letters of a zone. One thread at a time.
class LineReader {
public:
    LineReader();
    ~LineReader();

    /// Whether the model for recognition is installed.
    bool isReady() const { return ready; }

    std::string read(const Shades& strip);

private:
    std::unique_ptr<tesseract::TessBaseAPI> recognition;
    bool ready = false;
};

} // namespace kivo::reader
