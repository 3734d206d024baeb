#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

#include <string_view>

namespace kivo {

/// The step of a session that a success reports.
enum class IdvEvents {
    SCAN_QR_CODE = 0,    ///< A code was typed or scanned; the data is the code.
    JOIN_SESSION = 1,    ///< A session was joined; the data is its transaction identifier.
    UPDATE_SESSION = 2,  ///< An update was accepted.
    SESSION_STATUS = 3,  ///< A status request was accepted.
    COMMIT_SESSION = 4,  ///< A commit was accepted.
    UPLOAD_DOCUMENT = 5, ///< An upload was accepted.
    DOCUMENT_SCAN = 6,   ///< A document was read, at least its chip.
    FACE_SCAN = 7,       ///< A face liveness scan succeeded.
    OCR_SCAN = 8,        ///< An ID card was scanned.
};

template <>
struct RawValues<IdvEvents> {
    static constexpr int first = 0;
    static constexpr int last = 8;
};

/// Names events.
struct KIVO_EXPORT IdvEventsHelper {
    /// The event's name as declared above; empty for any other integer.
    static std::string_view eventName(IdvEvents from);
};

} // namespace kivo
