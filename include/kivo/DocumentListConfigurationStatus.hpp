#pragma once

#include <kivo/RawValue.hpp>

namespace kivo {

/// Whether the session named the documents that a person may choose from.
enum class DocumentListConfigurationStatus {
    notConfigured = 0, ///< The document choice has not been shown in this process yet.
    notAvailable = 1,  ///< The choice was last shown without a list from the session.
    available = 2,     ///< The choice was last shown with a list from the session.
};

template <>
struct RawValues<DocumentListConfigurationStatus> {
    static constexpr int first = 0;
    static constexpr int last = 2;
};

} // namespace kivo
