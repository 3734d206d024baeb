#include "screens/Failures.hpp"

namespace kivo::reader {

using platform::readid::FailureReason;

FailedStep failedStep(ChipFailure failure) {
    using enum ChipFailure;
    switch (failure) {
    case noReader:
        return {.reason = FailureReason::nfcError,
                .title = "There is no card reader",
                .sentence = "Connect a card reader to this machine, then try again."};
    case noService:
        return {.reason = FailureReason::nfcError,
                .title = "The card reader cannot be used",
                .sentence = "The machine's service for card readers does not answer. Ask the people who run this "
                            "machine, then try again."};
    case noChip:
        return {.reason = FailureReason::noChip,
                .title = "No chip was found",
                .sentence = "Look for the sign of a chip on the cover or on the card. If the document has it, take off "
                            "any sleeve, lay the document on the middle of the reader, and try again."};
    case accessDenied:
        return {.reason = FailureReason::nfcAccessControlError,
                .title = "The chip does not open",
                .sentence = "The values do not fit to this document. Type them as they are printed on the document.",
                .isOfKey = true};
    case takenAway:
        return {.reason = FailureReason::nfcError,
                .title = "The document was taken away",
                .sentence = "Try again, and leave the document on the reader until all is read."};
    case unsupported:
        return {.reason = FailureReason::unsupportedDocument,
                .title = "This chip cannot be read",
                .sentence =
                    "The chip is none of a passport or an identity card, or needs a reader of another kind. Try "
                    "another document."};
    case tookTooLong:
        return {.reason = FailureReason::nfcError,
                .title = "The reading took too long",
                .sentence = "Turn the document or move it a little on the reader, and try again."};
    case broken:
        return {.reason = FailureReason::nfcError,
                .title = "The chip's answers are damaged",
                .sentence = "Take the document off the reader, lay it down again, and try once more."};
    case stopped:
        break;
    }
    return {.reason = FailureReason::userCancelled,
            .title = "The reading was stopped",
            .sentence = "Try again when you are ready."};
}

FailedStep failedSending(FailureReason reason) {
    using enum FailureReason;
    switch (reason) {
    case connectionError:
        return {.reason = reason,
                .title = "The document could not be sent",
                .sentence = "There is no connection to the service. Look after the network, then send again."};
    case sslError:
        return {.reason = reason,
                .title = "The service is not the right one",
                .sentence = "The connection to the service is not safe, and nothing was sent. Use another network, or "
                            "update the application.",
                .isWorthRetrying = false};
    case sessionExpired:
        return {.reason = reason,
                .title = "The session has ended",
                .sentence = "Begin again with a new activation code.",
                .isWorthRetrying = false};
    case authorisationError:
        return {.reason = reason,
                .title = "The service does not take documents from here",
                .sentence = "Begin again with a new activation code.",
                .isWorthRetrying = false};
    case tooManyRequestsError:
        return {.reason = reason, .title = "The service is busy", .sentence = "Wait for a while, then send again."};
    default:
        return {.reason = reason,
                .title = "The service has refused the document",
                .sentence = "Begin again. If that does not help, ask the people who run the service.",
                .isWorthRetrying = false};
    }
}

FailedStep wrongDocument() {
    return {.reason = FailureReason::wrongDocumentType,
            .title = "This is a document of another kind",
            .sentence = "This kind of document is not asked for here. Show another document.",
            .isWorthRetrying = false};
}

} // namespace kivo::reader
