#ifndef KIVO_C_CODES_H
#define KIVO_C_CODES_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The numbers of the failures. docs/integration.md tells what each means and what to do. */
typedef enum kivo_code KIVO_INT32 {
    KIVO_CODE_STATUS_INVALID_ACTIVATION_CODE = 1001,
    KIVO_CODE_STATUS_INVALID_DEVICE_CODE = 1002,
    KIVO_CODE_STATUS_BAD_BIODATA = 1003,
    KIVO_CODE_STATUS_BAD_BIODATA_DOCTYPE = 1004,
    KIVO_CODE_STATUS_BAD_BIODATA_EXPIRY = 1005,
    KIVO_CODE_STATUS_BAD_BIODATA_ISSUER = 1006,
    KIVO_CODE_STATUS_BAD_FACEMAP = 1007,
    KIVO_CODE_STATUS_BAD_PROTOCOL = 1008,
    KIVO_CODE_STATUS_INVALID_DEVICE_REQUEST = 1009,
    KIVO_CODE_STATUS_INVALID_SESSION = 1010,
    KIVO_CODE_STATUS_AUTH_FAILED = 1011,
    KIVO_CODE_UNKNOWN_QR_CODE = 1111,
    KIVO_CODE_UNKNOWN_ERROR = 1112,
    KIVO_CODE_NETWORK_ERROR = 1113,
    KIVO_CODE_RETRY_LIMIT_REACHED = 1114,
    KIVO_CODE_FACETEC_INITIALIZATION_FAILED = 1115,
    KIVO_CODE_INVALID_JOIN_SESSION = 1116,
    KIVO_CODE_INVALID_UPDATE_SESSION = 1117,
    KIVO_CODE_INVALID_COMMIT_SESSION = 1118,
    KIVO_CODE_INVALID_STATUS_SESSION = 1119,
    KIVO_CODE_OCR_SCAN_FAILED = 1120,
    KIVO_CODE_BIODATA_UPLOAD_FAILED = 1121,
    KIVO_CODE_PARSING_ERROR = 1122,
    KIVO_CODE_NO_RESPONSE = 1123,
    KIVO_CODE_UNSECURE_SERVER_PINNING_FAILED = 1124,
    KIVO_CODE_EMPTY_ACCESS_KEY = 1125,
    KIVO_CODE_EMPTY_BIODATA_PROXY = 1126,
    KIVO_CODE_INVALID_BIODATA_ENDPOINT = 1127,
    KIVO_CODE_READID_INITIALIZATION_FAILED = 1128,
    KIVO_CODE_INVALID_FACEMAP_TOKEN = 1129,
    KIVO_CODE_FACESCAN_NO_SESSION_RESULT = 1130,
    KIVO_CODE_CANCELLED_BY_USER = 1133,
    KIVO_CODE_NO_CHIP = 2001,
    KIVO_CODE_CONNECTION_ERROR = 2002,
    KIVO_CODE_USER_CANCELLED = 2003,
    KIVO_CODE_CAMERA_PERMISSION_DENIED = 2004,
    KIVO_CODE_WRONG_DOCUMENT_TYPE = 2005,
    KIVO_CODE_TOO_MANY_REQUESTS = 2006,
    KIVO_CODE_SERVER_ERROR = 2007,
    KIVO_CODE_AUTHORISATION_ERROR = 2008,
    KIVO_CODE_SERVER_SESSION_ERROR = 2009,
    KIVO_CODE_SSL_ERROR = 2010,
    KIVO_CODE_SESSION_EXPIRED = 2011,
    KIVO_CODE_NFC_ACCESS_CONTROL_ERROR = 2012,
    KIVO_CODE_BACKGROUND_TIMEOUT = 2016,
    KIVO_CODE_NFC_ERROR = 2017,
    KIVO_CODE_UNSUPPORTED_DOCUMENT = 2019,
    KIVO_CODE_NFC_NOT_SUPPORTED = 2020,
    KIVO_CODE_BACK_NAVIGATION = 2022,
    KIVO_CODE_INVALID_CONFIGURATION = 2023,
    KIVO_CODE_VIZ_CAPTURE_TIMEOUT = 2024,
    KIVO_CODE_CANCELLED = 3004,
    KIVO_CODE_SESSION_UNSUCCESSFUL = 3005,
    KIVO_CODE_ENCRYPTION_KEY_INVALID = 3006,
    KIVO_CODE_TIMEOUT = 3007,
    KIVO_CODE_CONTEXT_SWITCH = 3008,
    KIVO_CODE_CAMERA_INITIALIZATION_ISSUE = 3009,
    KIVO_CODE_UNKNOWN_INTERNAL_ERROR = 3010,
    KIVO_CODE_LANDSCAPE_MODE_NOT_ALLOWED = 3011,
    KIVO_CODE_REVERSE_PORTRAIT_NOT_ALLOWED = 3012,
    KIVO_CODE_LOCKED_OUT = 3013,
    KIVO_CODE_MISSING_GUIDANCE_IMAGES = 3014,
    KIVO_CODE_USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT = 3015,
    KIVO_CODE_FACE_SCAN_LOW_MEMORY = 3016,
    KIVO_CODE_CAMERA_PERMISSION_ERROR = 3019,
    KIVO_CODE_STATUS_SESSION_EXPIRED = 3020,
} kivo_code;

/** A failure in words. The library owns it; it is never freed and never changes. */
typedef struct kivo_response_code {
    /** The bytes that this release of the library fills. */
    size_t size;
    kivo_code code;
    /** As the identity service writes it, such as "STATUS_INVALID_SESSION". */
    kivo_text name;
    /** In English, for logs and for hosts without a text of their own. */
    kivo_text message;
    /** "Processing error", "Document scan error" or "Face scan error". */
    kivo_text generic_message;
} kivo_response_code;

/** Whether the code tells that somebody did not want to go on, and nothing went wrong: the person has left a screen or
 * the vendor's library, or the host has given a request up. False for any other integer. Any thread. */
KIVO_C_EXPORT bool kivo_response_code_is_cancellation(int32_t code);

/** The failure of that number; null when no failure has the number. Any thread. */
KIVO_C_EXPORT const kivo_response_code* kivo_response_code_of(int32_t code);

/** The failure of that name; null for any other text. Any thread. */
KIVO_C_EXPORT const kivo_response_code* kivo_response_code_named(kivo_text name);

/** The failures in order, from index 0; null beyond the last. Any thread. */
KIVO_C_EXPORT const kivo_response_code* kivo_response_code_at(size_t index);

#ifdef __cplusplus
}
#endif

#endif
