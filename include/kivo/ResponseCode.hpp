#pragma once

#include <kivo/Export.hpp>

#include <optional>
#include <span>
#include <string_view>

namespace kivo {

/// The failures of the SDK's operations, in fixed order.
///
/// The identity service names a refusal by the case's name ("STATUS_INVALID_SESSION"); a host that stores or sends
/// a failure uses `code`, whose numbers never change.
enum class ResponseCode {
    // Refusals by the identity service.
    STATUS_INVALID_ACTIVATION_CODE,
    STATUS_INVALID_DEVICE_CODE,
    STATUS_BAD_BIODATA,
    STATUS_BAD_BIODATA_DOCTYPE,
    STATUS_BAD_BIODATA_EXPIRY,
    STATUS_BAD_BIODATA_ISSUER,
    STATUS_BAD_FACEMAP,
    STATUS_BAD_PROTOCOL,
    STATUS_INVALID_DEVICE_REQUEST,
    STATUS_INVALID_SESSION,
    STATUS_AUTH_FAILED,
    // Failures of the SDK, its session and its transport.
    UNKNOWN_QR_CODE,
    UNKNOWN_ERROR,
    NETWORK_ERROR,
    RETRY_LIMIT_REACHED,
    FACETEC_INITIALIZATION_FAILED,
    INVALID_JOIN_SESSION,
    INVALID_UPDATE_SESSION,
    INVALID_COMMIT_SESSION,
    INVALID_STATUS_SESSION,
    OCR_SCAN_FAILED,
    BIODATA_UPLOAD_FAILED,
    PARSING_ERROR,
    NO_RESPONSE,
    UNSECURE_SERVER_PINNING_FAILED,
    EMPTY_ACCESS_KEY,
    EMPTY_BIODATA_PROXY,
    INVALID_BIODATA_ENDPOINT,
    READID_INITIALIZATION_FAILED,
    INVALID_FACEMAP_TOKEN,
    FACESCAN_NO_SESSION_RESULT,
    CANCELLED_BY_USER,
    // Outcomes of reading a document.
    NO_CHIP,
    CONNECTION_ERROR,
    USER_CANCELLED,
    CAMERA_PERMISSION_DENIED,
    WRONG_DOCUMENT_TYPE,
    TOO_MANY_REQUESTS,
    SERVER_ERROR,
    AUTHORISATION_ERROR,
    SERVER_SESSION_ERROR,
    SSL_ERROR,
    SESSION_EXPIRED,
    NFC_ACCESS_CONTROL_ERROR,
    BACKGROUND_TIMEOUT,
    NFC_ERROR,
    UNSUPPORTED_DOCUMENT,
    NFC_NOT_SUPPORTED,
    BACK_NAVIGATION,
    INVALID_CONFIGURATION,
    VIZ_CAPTURE_TIMEOUT,
    // Outcomes of a face scan.
    CANCELLED,
    SESSION_UNSUCCESSFUL,
    ENCRYPTION_KEY_INVALID,
    TIMEOUT,
    CONTEXT_SWITCH,
    CAMERA_INITIALIZATION_ISSUE,
    UNKNOWN_INTERNAL_ERROR,
    LANDSCAPE_MODE_NOT_ALLOWED,
    REVERSE_PORTRAIT_NOT_ALLOWED,
    LOCKED_OUT,
    MISSING_GUIDANCE_IMAGES,
    USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT,
    FACE_SCAN_LOW_MEMORY,
    CAMERA_PERMISSION_ERROR,
    STATUS_SESSION_EXPIRED,
};

/// The number that a host sees, 1001 to 3020. A value outside the enumeration has 0 and empty texts.
KIVO_EXPORT int code(ResponseCode responseCode);

/// The case's name as declared above.
KIVO_EXPORT std::string_view name(ResponseCode responseCode);

/// The failure in English, for logs and for hosts without a text of their own.
KIVO_EXPORT std::string_view message(ResponseCode responseCode);

/// "Processing error", "Document scan error" or "Face scan error", by the range of the code.
KIVO_EXPORT std::string_view genericMessage(ResponseCode responseCode);

/// Whether the code tells that somebody did not want to go on, and nothing went wrong: the person has left a screen or
/// the vendor's library, or the host has given a request up. True for `CANCELLED_BY_USER`, `USER_CANCELLED`,
/// `BACK_NAVIGATION`, `CANCELLED` and `USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT`.
KIVO_EXPORT bool isCancellation(ResponseCode responseCode);

/// The failure of that number; absent when no failure has the number.
KIVO_EXPORT std::optional<ResponseCode> responseCode(int code);

/// The failure of that name, as the identity service writes it; absent for any other text.
KIVO_EXPORT std::optional<ResponseCode> responseCodeNamed(std::string_view name);

/// All cases in the order above.
KIVO_EXPORT std::span<const ResponseCode> allResponseCodes();

} // namespace kivo
