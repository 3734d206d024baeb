#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

#include <string_view>

namespace kivo {

/// The subject of a call to `acquire` or `upload`. The integer travels with an upload as "acquisition-object".
enum class AcquisitionObject {
    activationCode = 0,    ///< The activation code, typed or scanned.
    nfcScan = 1,           ///< A document's chip and printed page.
    mrzScan = 2,           ///< The same screen as for `nfcScan`.
    facemapScan = 3,       ///< A face liveness scan.
    selfieImage = 4,       ///< Upload only.
    documentMainImage = 5, ///< Upload only.
    documentBackImage = 6, ///< Upload only.
    ocrScan = 7,           ///< An optical scan of another ID card.
};

template <>
struct RawValues<AcquisitionObject> {
    static constexpr int first = 0;
    static constexpr int last = 7;
};

/// Names acquisition objects.
struct KIVO_EXPORT AcquisitionObjectHelper {
    /// The name in capitals, such as "NFC_SCAN"; empty for any other integer.
    static std::string_view acquisitionObjectName(AcquisitionObject from);
};

} // namespace kivo
