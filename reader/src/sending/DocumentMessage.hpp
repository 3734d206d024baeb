#pragma once

#include "reading/ChipReading.hpp"

#include <kivo/platform/ReadID.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::reader {

/// What a reading has found of a document, for the document proxy. Personal data: never logged.
struct ReadDocument {
    platform::readid::DocumentType type = platform::readid::DocumentType::passport;
    /// The lines of the page; empty where the page was not read.
    std::vector<std::string> lines{};
    /// Absent where the chip was not read.
    std::optional<ChipDocument> chip{};
};

/// The document as JSON (docs/document-proxy.md).
std::string documentMessage(const ReadDocument& document);

/// The request's body with a sealed document.
std::string sealedBody(ByteView message);

/// The reading's name in the proxy's answer; absent where the answer has none.
std::optional<std::string> sessionIn(std::string_view answer);

} // namespace kivo::reader
