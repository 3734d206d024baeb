#include <kivo/ResponseCode.hpp>

#include <algorithm>
#include <array>
#include <cstddef>

namespace kivo {
namespace {

using enum ResponseCode;

struct Entry {
    ResponseCode responseCode;
    std::string_view name;
    int code;
    std::string_view message;
};

// In the order of the declaration, so that a case is the index of its entry.
constexpr std::array entries{
    Entry{STATUS_INVALID_ACTIVATION_CODE, "STATUS_INVALID_ACTIVATION_CODE", 1001, "Activation code is not valid"},
    Entry{STATUS_INVALID_DEVICE_CODE, "STATUS_INVALID_DEVICE_CODE", 1002,
          "Unknown device code. the application is not supported"},
    Entry{STATUS_BAD_BIODATA, "STATUS_BAD_BIODATA", 1003, "Biodata could not be verified"},
    Entry{STATUS_BAD_BIODATA_DOCTYPE, "STATUS_BAD_BIODATA_DOCTYPE", 1004, "Unexpected document type"},
    Entry{STATUS_BAD_BIODATA_EXPIRY, "STATUS_BAD_BIODATA_EXPIRY", 1005, "Document expiry date failed verification"},
    Entry{STATUS_BAD_BIODATA_ISSUER, "STATUS_BAD_BIODATA_ISSUER", 1006, "Unexpected document issuer"},
    Entry{STATUS_BAD_FACEMAP, "STATUS_BAD_FACEMAP", 1007, "Facemap posted to server is missing, invalid or unknown"},
    Entry{STATUS_BAD_PROTOCOL, "STATUS_BAD_PROTOCOL", 1008, "The application sent unexpected data"},
    Entry{STATUS_INVALID_DEVICE_REQUEST, "STATUS_INVALID_DEVICE_REQUEST", 1009,
          "User/client app is out of sync with the server session"},
    Entry{STATUS_INVALID_SESSION, "STATUS_INVALID_SESSION", 1010, "Too many login attempts in same session"},
    Entry{STATUS_AUTH_FAILED, "STATUS_AUTH_FAILED", 1011, "Authentication failed verification check"},
    Entry{UNKNOWN_QR_CODE, "UNKNOWN_QR_CODE", 1111, "Please try to scan valid QR code."},
    Entry{UNKNOWN_ERROR, "UNKNOWN_ERROR", 1112, "Unknown error"},
    Entry{NETWORK_ERROR, "NETWORK_ERROR", 1113, "Check your internet connection and try again"},
    Entry{RETRY_LIMIT_REACHED, "RETRY_LIMIT_REACHED", 1114,
          "Maximum attempts limit reached. Please start again with another activation code."},
    Entry{FACETEC_INITIALIZATION_FAILED, "FACETEC_INITIALIZATION_FAILED", 1115,
          "Face scan library could not be initialized"},
    Entry{INVALID_JOIN_SESSION, "INVALID_JOIN_SESSION", 1116, "Invalid join session response"},
    Entry{INVALID_UPDATE_SESSION, "INVALID_UPDATE_SESSION", 1117, "Invalid update session response"},
    Entry{INVALID_COMMIT_SESSION, "INVALID_COMMIT_SESSION", 1118, "Invalid commit session response"},
    Entry{INVALID_STATUS_SESSION, "INVALID_STATUS_SESSION", 1119, "Invalid status session response"},
    Entry{OCR_SCAN_FAILED, "OCR_SCAN_FAILED", 1120, "OCR scan failed"},
    Entry{BIODATA_UPLOAD_FAILED, "BIODATA_UPLOAD_FAILED", 1121, "Biodata upload failed"},
    Entry{PARSING_ERROR, "PARSING_ERROR", 1122, "Parsing error"},
    Entry{NO_RESPONSE, "NO_RESPONSE", 1123, "No response"},
    Entry{UNSECURE_SERVER_PINNING_FAILED, "UNSECURE_SERVER_PINNING_FAILED", 1124,
          "Unsecure server detected. Pinning failed."},
    Entry{EMPTY_ACCESS_KEY, "EMPTY_ACCESS_KEY", 1125, "Document scan flow has empty access key."},
    Entry{EMPTY_BIODATA_PROXY, "EMPTY_BIODATA_PROXY", 1126, "Document scan flow has empty biodata proxy url."},
    Entry{INVALID_BIODATA_ENDPOINT, "INVALID_BIODATA_ENDPOINT", 1127, "Invalid biodata endpoint url"},
    Entry{READID_INITIALIZATION_FAILED, "READID_INITIALIZATION_FAILED", 1128, "ReadID failed to initiate"},
    Entry{INVALID_FACEMAP_TOKEN, "INVALID_FACEMAP_TOKEN", 1129, "Invalid Facemap Token"},
    Entry{FACESCAN_NO_SESSION_RESULT, "FACESCAN_NO_SESSION_RESULT", 1130, "Facescan flow has no session result"},
    Entry{CANCELLED_BY_USER, "CANCELLED_BY_USER", 1133, "User cancelled via close button"},
    Entry{NO_CHIP, "NO_CHIP", 2001, "No chip"},
    Entry{CONNECTION_ERROR, "CONNECTION_ERROR", 2002, "Connection error"},
    Entry{USER_CANCELLED, "USER_CANCELLED", 2003, "User Cancelled"},
    Entry{CAMERA_PERMISSION_DENIED, "CAMERA_PERMISSION_DENIED", 2004, "Camera permission error"},
    Entry{WRONG_DOCUMENT_TYPE, "WRONG_DOCUMENT_TYPE", 2005, "Wrong document error"},
    Entry{TOO_MANY_REQUESTS, "TOO_MANY_REQUESTS", 2006, "Too many request error"},
    Entry{SERVER_ERROR, "SERVER_ERROR", 2007, "Server error"},
    Entry{AUTHORISATION_ERROR, "AUTHORISATION_ERROR", 2008, "Authorization error"},
    Entry{SERVER_SESSION_ERROR, "SERVER_SESSION_ERROR", 2009, "Server session error"},
    Entry{SSL_ERROR, "SSL_ERROR", 2010, "SSL error"},
    Entry{SESSION_EXPIRED, "SESSION_EXPIRED", 2011, "Session expired"},
    Entry{NFC_ACCESS_CONTROL_ERROR, "NFC_ACCESS_CONTROL_ERROR", 2012, "NFC access control error"},
    Entry{BACKGROUND_TIMEOUT, "BACKGROUND_TIMEOUT", 2016, "Background timeout"},
    Entry{NFC_ERROR, "NFC_ERROR", 2017, "NFC error"},
    Entry{UNSUPPORTED_DOCUMENT, "UNSUPPORTED_DOCUMENT", 2019, "Unknown document"},
    Entry{NFC_NOT_SUPPORTED, "NFC_NOT_SUPPORTED", 2020, "ReadID NFC not supported"},
    Entry{BACK_NAVIGATION, "BACK_NAVIGATION", 2022, "ReadID Back Navigation error"},
    Entry{INVALID_CONFIGURATION, "INVALID_CONFIGURATION", 2023, "ReadID Invalid Configuration Error"},
    Entry{VIZ_CAPTURE_TIMEOUT, "VIZ_CAPTURE_TIMEOUT", 2024, "Viz capture has been timed out"},
    Entry{CANCELLED, "CANCELLED", 3004, "Face scan cancelled"},
    Entry{SESSION_UNSUCCESSFUL, "SESSION_UNSUCCESSFUL", 3005, "Facescan session unsuccessful"},
    Entry{ENCRYPTION_KEY_INVALID, "ENCRYPTION_KEY_INVALID", 3006, "Session cancelled because encryption key invalid."},
    Entry{TIMEOUT, "TIMEOUT", 3007, "Session cancelled due to timeout."},
    Entry{CONTEXT_SWITCH, "CONTEXT_SWITCH", 3008,
          "Session cancelled because a Context Switch occurred during session."},
    Entry{CAMERA_INITIALIZATION_ISSUE, "CAMERA_INITIALIZATION_ISSUE", 3009,
          "Session failed because of an unexpected camera error."},
    Entry{UNKNOWN_INTERNAL_ERROR, "UNKNOWN_INTERNAL_ERROR", 3010,
          "Session failed because of an unhandled internal error."},
    Entry{LANDSCAPE_MODE_NOT_ALLOWED, "LANDSCAPE_MODE_NOT_ALLOWED", 3011,
          "Session cancelled because device is in landscape mode."},
    Entry{REVERSE_PORTRAIT_NOT_ALLOWED, "REVERSE_PORTRAIT_NOT_ALLOWED", 3012,
          "Session cancelled because device is in reverse portrait mode."},
    Entry{LOCKED_OUT, "LOCKED_OUT", 3013, "FaceTec SDK is in a lockout state."},
    Entry{MISSING_GUIDANCE_IMAGES, "MISSING_GUIDANCE_IMAGES", 3014,
          "Session cancelled because guidance images were not provided."},
    Entry{USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT, "USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT", 3015,
          "Session cancelled because user pressed the Get Ready screen subtext message."},
    Entry{FACE_SCAN_LOW_MEMORY, "FACE_SCAN_LOW_MEMORY", 3016, "Face scan experienced low memory."},
    Entry{CAMERA_PERMISSION_ERROR, "CAMERA_PERMISSION_ERROR", 3019,
          "Camera is required but access prevented by user settings."},
    Entry{STATUS_SESSION_EXPIRED, "STATUS_SESSION_EXPIRED", 3020,
          "Facetec session token was either not provided or it has expired."},
};

constexpr bool inDeclarationOrder() {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].responseCode != static_cast<ResponseCode>(i)) {
            return false;
        }
    }
    return true;
}

static_assert(inDeclarationOrder());

constexpr Entry unknown{ResponseCode{-1}, "", 0, ""};

const Entry& entryOf(ResponseCode responseCode) {
    const auto index = static_cast<std::size_t>(responseCode);
    return index < entries.size() ? entries[index] : unknown;
}

} // namespace

int code(ResponseCode responseCode) {
    return entryOf(responseCode).code;
}

std::string_view name(ResponseCode responseCode) {
    return entryOf(responseCode).name;
}

std::string_view message(ResponseCode responseCode) {
    return entryOf(responseCode).message;
}

std::string_view genericMessage(ResponseCode responseCode) {
    if (entryOf(responseCode).name.empty()) {
        return "";
    }
    if (responseCode <= ResponseCode::CANCELLED_BY_USER) {
        return "Processing error";
    }
    return responseCode <= ResponseCode::VIZ_CAPTURE_TIMEOUT ? "Document scan error" : "Face scan error";
}

bool isCancellation(ResponseCode responseCode) {
    switch (responseCode) {
    case CANCELLED_BY_USER:
    case USER_CANCELLED:
    case BACK_NAVIGATION:
    case CANCELLED:
    case USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT:
        return true;
    default:
        return false;
    }
}

std::optional<ResponseCode> responseCode(int code) {
    const auto found = std::ranges::find(entries, code, &Entry::code);
    return found == entries.end() ? std::nullopt : std::optional{found->responseCode};
}

std::optional<ResponseCode> responseCodeNamed(std::string_view name) {
    const auto found = std::ranges::find(entries, name, &Entry::name);
    return found == entries.end() ? std::nullopt : std::optional{found->responseCode};
}

std::span<const ResponseCode> allResponseCodes() {
    static constexpr auto all = [] {
        std::array<ResponseCode, entries.size()> codes{};
        std::ranges::transform(entries, codes.begin(), &Entry::responseCode);
        return codes;
    }();
    return all;
}

} // namespace kivo
