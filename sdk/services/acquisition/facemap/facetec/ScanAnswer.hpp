#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// What the vendor's server says to a scan.
struct ScanAnswer {
    bool isAccepted = false;
    /// For the vendor's library; empty when the server sent none.
    std::string scanResultBlob;

    /// Absent when the text is no JSON object.
    static std::optional<ScanAnswer> decode(std::string_view text);
};

} // namespace kivo
