#include "services/acquisition/nfc/innovator/ReadingFailures.hpp"

#include <algorithm>
#include <array>

namespace kivo {
namespace {

using platform::readid::FailureReason;

struct Row {
    FailureReason reason;
    ResponseCode withDocumentList;
    ResponseCode withoutDocumentList;
};

constexpr Row always(FailureReason reason, ResponseCode code) {
    return {.reason = reason, .withDocumentList = code, .withoutDocumentList = code};
}

constexpr std::array rows{
    always(FailureReason::backgroundTimeout, ResponseCode::BACKGROUND_TIMEOUT),
    always(FailureReason::sessionExpired, ResponseCode::SESSION_EXPIRED),
    always(FailureReason::authorisationError, ResponseCode::AUTHORISATION_ERROR),
    always(FailureReason::serverSessionError, ResponseCode::SERVER_SESSION_ERROR),
    always(FailureReason::sslError, ResponseCode::SSL_ERROR),
    always(FailureReason::nfcAccessControlError, ResponseCode::NFC_ACCESS_CONTROL_ERROR),
    always(FailureReason::connectionError, ResponseCode::CONNECTION_ERROR),
    always(FailureReason::tooManyRequestsError, ResponseCode::TOO_MANY_REQUESTS),
    always(FailureReason::nfcError, ResponseCode::NFC_ERROR),
    Row{FailureReason::userCancelled, ResponseCode::USER_CANCELLED, ResponseCode::CANCELLED_BY_USER},
    always(FailureReason::cameraPermissionDenied, ResponseCode::CAMERA_PERMISSION_DENIED),
    always(FailureReason::noChip, ResponseCode::NO_CHIP),
    always(FailureReason::unsupportedDocument, ResponseCode::UNSUPPORTED_DOCUMENT),
    Row{FailureReason::backNavigation, ResponseCode::BACK_NAVIGATION, ResponseCode::CANCELLED_BY_USER},
    always(FailureReason::wrongDocumentType, ResponseCode::WRONG_DOCUMENT_TYPE),
    always(FailureReason::vizCaptureTimeout, ResponseCode::VIZ_CAPTURE_TIMEOUT),
};

} // namespace

ResponseCode readingFailureCode(FailureReason reason, bool isDocListAvailable) {
    const auto* const row = std::ranges::find(rows, reason, &Row::reason);
    if (row == rows.end()) {
        return ResponseCode::UNKNOWN_ERROR;
    }
    return isDocListAvailable ? row->withDocumentList : row->withoutDocumentList;
}

} // namespace kivo
