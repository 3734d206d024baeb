#pragma once

#include "platform/json/Json.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// What the vendor's server says to a scan.
struct ScanAnswer {
    bool isAccepted = false;
    /// For the vendor's library; empty when the server sent none.
    std::string scanResultBlob;

    /// The text for the vendor's library is as large as the vendor likes; the rest is as small as any answer.
    static constexpr json::Limits limits{.bytes = std::size_t{16} << 20};

    /// Absent when the text is no JSON object, or is beyond the limits.
    static std::optional<ScanAnswer> decode(std::string_view text);
};

} // namespace kivo
