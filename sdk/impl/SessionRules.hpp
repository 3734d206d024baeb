#pragma once

#include "Models/InterfaceVersion.hpp"

#include <kivo/ResponseCode.hpp>

namespace kivo {

/// Who carries a failure report to the identity service.
enum class ReportRoute { communicationSecurityManager, backendClient };

/// Which screen failures a host does not hear of, though they are reported to the service.
enum class Withheld { nothing, statusCodes, statusCodesAndLeaving };

/// All that differs between the session APIs of the interface versions.
struct SessionRules {
    /// `acquire` knows the ID scan screen.
    bool presentsIdScan = false;
    /// An invalid QR code and the close button answer on the main queue rather than inside the screen's call.
    bool queuesCodeScreenFailures = false;
    /// Closing the activation code screen is logged and reported.
    bool reportsCancellation = false;
    /// Failed joins, updates, status requests, commits and uploads are reported.
    bool reportsRequestFailures = false;
    /// A failed join empties the code boxes.
    bool resetsCodeBoxes = false;
    bool logsCommit = false;
    Withheld withheld = Withheld::nothing;
    ReportRoute reportRoute = ReportRoute::communicationSecurityManager;
};

/// The rules of a version; each version states its own difference to the one before.
constexpr SessionRules sessionRulesOf(InterfaceVersion version) {
    SessionRules rules;
    if (version >= InterfaceVersion::v160) {
        rules.presentsIdScan = true;
        rules.reportsRequestFailures = true;
    }
    if (version >= InterfaceVersion::v170) {
        rules.queuesCodeScreenFailures = true;
        rules.reportsCancellation = true;
        rules.resetsCodeBoxes = true;
        rules.withheld = Withheld::statusCodes;
        rules.reportRoute = ReportRoute::backendClient;
    }
    if (version >= InterfaceVersion::v180) {
        rules.logsCommit = true;
        rules.withheld = Withheld::statusCodesAndLeaving;
    }
    return rules;
}

/// Whether a host hears of a document screen's failure.
bool passesDocumentFilter(Withheld withheld, ResponseCode code);

/// Whether a host hears of a face screen's failure.
bool passesFaceFilter(Withheld withheld, ResponseCode code);

} // namespace kivo
