#pragma once

#include <kivo/AcquisitionObject.hpp>

#include <array>
#include <cstddef>
#include <string_view>

namespace kivo {

/// The interface versions that a host can ask for, oldest first. Each version has a row in `interfaceVersions`.
enum class InterfaceVersion { v140, v150, v160, v170, v180 };

struct InterfaceVersionNames {
    /// The first two characters of a version text that asks for this version.
    std::string_view code;
    /// The beginning of the device code; the host's key follows.
    std::string_view deviceCodePrefix;
    std::string_view sessionApi;
    std::string_view backendClient;
};

/// The screen failures that are reported to the service only, and not told to the host.
enum class UntoldFailures { none, statusCodes, statusCodesAndLeaving };

/// The sender of failure reports to the identity service.
enum class ReportRoute { communicationSecurityManager, backendClient };

/// The differences between the session APIs of the interface versions.
struct SessionRules {
    /// `acquire` shows the ID scan screen.
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
    UntoldFailures untoldFailures = UntoldFailures::none;
    ReportRoute reportRoute = ReportRoute::communicationSecurityManager;

    /// Whether `acquire` has a screen for the object.
    constexpr bool presents(AcquisitionObject object) const {
        using enum AcquisitionObject;
        return object == activationCode || object == nfcScan || object == mrzScan || object == facemapScan ||
               (object == ocrScan && presentsIdScan);
    }
};

/// The treatment of a failure report by a backend client.
enum class Reporting { none, silent, logged };

/// The differences between the backend clients of the interface versions.
struct BackendRules {
    Reporting reporting = Reporting::none;
    /// A join first empties the stored answer, so that a failed join leaves no earlier session in the store.
    bool clearsStoredAnswerFirst = false;
    /// A debug line shows the client before the join is sent.
    bool logsClientBeforeJoin = false;
};

struct InterfaceVersionRow {
    InterfaceVersion version;
    InterfaceVersionNames names;
    SessionRules session;
    BackendRules backend;
};

/// The differences between the interface versions: one row for each version, in the order of the enumeration.
inline constexpr std::array interfaceVersions{
    InterfaceVersionRow{.version = InterfaceVersion::v140,
                        .names = {"14", "1401", "KivoAPI_140", "KivoBE_140"},
                        .session = {},
                        .backend = {}},
    InterfaceVersionRow{.version = InterfaceVersion::v150,
                        .names = {"15", "1501", "KivoAPI_150", "KivoBE_150"},
                        .session = {},
                        .backend = {}},
    InterfaceVersionRow{.version = InterfaceVersion::v160,
                        .names = {"16", "1601", "KivoAPI_160", "KivoBE_160"},
                        .session = {.presentsIdScan = true, .reportsRequestFailures = true},
                        .backend = {}},
    InterfaceVersionRow{.version = InterfaceVersion::v170,
                        .names = {"17", "1701", "KivoAPI_170", "KivoBE_170"},
                        .session = {.presentsIdScan = true,
                                    .queuesCodeScreenFailures = true,
                                    .reportsCancellation = true,
                                    .reportsRequestFailures = true,
                                    .resetsCodeBoxes = true,
                                    .untoldFailures = UntoldFailures::statusCodes,
                                    .reportRoute = ReportRoute::backendClient},
                        .backend = {.reporting = Reporting::silent}},
    InterfaceVersionRow{
        .version = InterfaceVersion::v180,
        .names = {"18", "1801", "KivoAPI_180", "KivoBE_180"},
        .session = {.presentsIdScan = true,
                    .queuesCodeScreenFailures = true,
                    .reportsCancellation = true,
                    .reportsRequestFailures = true,
                    .resetsCodeBoxes = true,
                    .logsCommit = true,
                    .untoldFailures = UntoldFailures::statusCodesAndLeaving,
                    .reportRoute = ReportRoute::backendClient},
        .backend = {.reporting = Reporting::logged, .clearsStoredAnswerFirst = true, .logsClientBeforeJoin = true}},
};

constexpr const InterfaceVersionRow& rowOf(InterfaceVersion version) {
    return interfaceVersions.at(static_cast<std::size_t>(version));
}

inline constexpr auto allInterfaceVersions = [] {
    std::array<InterfaceVersion, interfaceVersions.size()> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = interfaceVersions[i].version;
    }
    return all;
}();

static_assert(
    [] {
        for (std::size_t i = 0; i < interfaceVersions.size(); ++i) {
            if (interfaceVersions[i].version != static_cast<InterfaceVersion>(i)) {
                return false;
            }
        }
        return true;
    }(),
    "The rows stand in the order of the enumeration.");

constexpr const InterfaceVersionNames& namesOf(InterfaceVersion version) {
    return rowOf(version).names;
}

} // namespace kivo
