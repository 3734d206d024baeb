#include "impl/SessionAPI.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "support/HostFixture.hpp"
#include "support/ScriptedBackend.hpp"

#include <gmock/gmock.h>

#include <vector>

namespace kivo {
namespace {

using enum ResponseCode;

IdvOutcome failure(ResponseCode code) {
    return std::unexpected{code};
}

IdvOutcome success(IdvEvents event) {
    return std::make_shared<IdvResult>("data", event);
}

class SessionVersions : public test::HostFixture {
protected:
    /// A session API of one version with a pending acquisition, and everything that can be seen of it.
    struct Session {
        test::ScriptedBackend backend;
        std::shared_ptr<SessionAPI> api;
        std::vector<IdvOutcome> delivered;

        explicit Session(InterfaceVersion version)
            : api{std::make_shared<SessionAPI>(version, backend)} {
            api->acquire(AcquisitionObject::activationCode, nullptr,
                         [this](const IdvOutcome& outcome) { delivered.push_back(outcome); });
        }
    };

    SessionVersions() {
        // The reports of every route need a joined session; its update endpoint tells the routes apart.
        join(*KivoSDK::load("KEY", "18"));
        mainLoop->drain();
        joinRequests = service.requests().size();
    }

    /// How many reports went through the communication security manager since the last look.
    std::size_t noticesSince(std::size_t before, std::size_t expected) {
        service.waitForRequests(before + expected, std::chrono::seconds{10});
        return service.requests().size() - before;
    }

    std::size_t joinRequests = 0;
};

TEST_F(SessionVersions, DiffersExactlyAsTabulated) {
    using Screen = std::function<void(SessionAPI&, const IdvOutcome&)>;
    const Screen invalidCode = [](SessionAPI& api, const auto&) { api.invalidQRCodeScanned(); };
    const Screen close = [](SessionAPI& api, const auto&) { api.closeButtonPressed(); };
    const Screen document = [](SessionAPI& api, const auto& result) { api.documentFlowDidComplete(result); };
    const Screen forwarded = [](SessionAPI& api, const auto& result) { api.ocrFlowDidComplete(result); };
    const Screen idScan = [](SessionAPI& api, const auto& result) { api.ocrScanDidComplete(result); };
    const Screen face = [](SessionAPI& api, const auto& result) { api.livenessCheckDidComplete(result); };

    struct Row {
        const char* name;
        const Screen& screen;
        IdvOutcome result;
        /// Per version: h the handler is called at once, q on the main queue, - never; r a report is sent.
        const char* expected[5];
    };

    const Row rows[] = {
        {"invalid QR code", invalidCode, failure(UNKNOWN_QR_CODE), {"h", "h", "h", "q", "q"}},
        {"close button", close, failure(CANCELLED_BY_USER), {"h", "h", "h", "qr", "qr"}},
        {"document: status code", document, failure(STATUS_BAD_BIODATA), {"qr", "qr", "qr", "-r", "-r"}},
        {"document: last status code", document, failure(STATUS_AUTH_FAILED), {"qr", "qr", "qr", "-r", "-r"}},
        {"document: first other code", document, failure(UNKNOWN_QR_CODE), {"qr", "qr", "qr", "qr", "qr"}},
        {"document: cancelled", document, failure(USER_CANCELLED), {"qr", "qr", "qr", "qr", "-r"}},
        {"document: back", document, failure(BACK_NAVIGATION), {"qr", "qr", "qr", "qr", "-r"}},
        {"document: face code", document, failure(CANCELLED), {"qr", "qr", "qr", "qr", "qr"}},
        {"document: success", document, success(IdvEvents::DOCUMENT_SCAN), {"q", "q", "q", "q", "q"}},
        {"forwarded: status code", forwarded, failure(STATUS_BAD_BIODATA), {"qr", "qr", "qr", "qr", "qr"}},
        {"forwarded: success", forwarded, success(IdvEvents::OCR_SCAN), {"q", "q", "q", "q", "q"}},
        {"ID scan: status code", idScan, failure(STATUS_BAD_BIODATA), {"qr", "qr", "qr", "qr", "qr"}},
        {"ID scan: success", idScan, success(IdvEvents::OCR_SCAN), {"q", "q", "q", "q", "q"}},
        {"face: status code", face, failure(STATUS_INVALID_SESSION), {"qr", "qr", "qr", "-r", "-r"}},
        {"face: cancelled", face, failure(CANCELLED), {"qr", "qr", "qr", "qr", "-r"}},
        {"face: cancelled by subtext",
         face,
         failure(USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT),
         {"qr", "qr", "qr", "qr", "-r"}},
        {"face: document code", face, failure(USER_CANCELLED), {"qr", "qr", "qr", "qr", "qr"}},
        {"face: time-out", face, failure(TIMEOUT), {"qr", "qr", "qr", "qr", "qr"}},
        {"face: success", face, success(IdvEvents::FACE_SCAN), {"q", "q", "q", "q", "q"}},
    };
    for (const auto& row : rows) {
        for (const auto version : allInterfaceVersions) {
            SCOPED_TRACE(std::string{row.name} + ", " + std::string{namesOf(version).sessionApi});
            const std::string expected = row.expected[static_cast<std::size_t>(version)];
            Session session{version};
            const auto before = service.requests().size();
            row.screen(*session.api, row.result);
            EXPECT_EQ(session.delivered.size(), expected.starts_with('h') ? 1U : 0U);
            mainLoop->drain();
            EXPECT_EQ(session.delivered, std::vector<IdvOutcome>(expected.starts_with('-') ? 0 : 1, row.result));

            const std::size_t reported = expected.ends_with('r') ? 1 : 0;
            const bool throughClient = version >= InterfaceVersion::v170;
            ASSERT_EQ(session.backend.reports.size(), throughClient ? reported : 0U);
            ASSERT_EQ(noticesSince(before, throughClient ? 0 : reported), throughClient ? 0U : reported);
            if (reported > 0) {
                const auto report = ServerReportModel::of(row.result.error(), "", "");
                if (throughClient) {
                    EXPECT_EQ(session.backend.reports[0].code, report.code);
                } else {
                    EXPECT_THAT(service.requests().back().body,
                                testing::EndsWith("\"message\":\"" + report.message + "\"}"));
                }
            }
        }
    }
}

TEST_F(SessionVersions, CodesAreDeliveredAtOnce) {
    for (const auto version : allInterfaceVersions) {
        Session session{version};
        session.api->activationCodeEntered("123456");
        session.api->activationCodeScanned("ABC");
        ASSERT_EQ(session.delivered.size(), 2U);
        EXPECT_EQ((*session.delivered[0])->data(), "123456");
        EXPECT_EQ((*session.delivered[1])->data(), "ABC");
        EXPECT_EQ((*session.delivered[1])->responseType(), IdvEvents::SCAN_QR_CODE);
    }
}

TEST_F(SessionVersions, OnlyScreensReplaceThePendingAcquisition) {
    for (const auto version : allInterfaceVersions) {
        Session session{version};
        bool replaced = false;
        for (const auto object : {AcquisitionObject::selfieImage, AcquisitionObject::documentMainImage,
                                  AcquisitionObject::documentBackImage, static_cast<AcquisitionObject>(99)}) {
            session.api->acquire(object, nullptr, [&](const IdvOutcome&) { replaced = true; });
        }
        session.api->activationCodeEntered("1");
        EXPECT_EQ(session.delivered.size(), 1U);
        EXPECT_FALSE(replaced);
        session.api->acquire(AcquisitionObject::ocrScan, nullptr, [&](const IdvOutcome&) { replaced = true; });
        session.api->activationCodeEntered("1");
        EXPECT_EQ(replaced, version >= InterfaceVersion::v160);
    }
}

TEST_F(SessionVersions, ScreenOutcomesMoveTheAcquisitionState) {
    auto& state = UIStateManager::shared();
    Session session{InterfaceVersion::v180};
    session.api->documentFlowDidComplete(success(IdvEvents::DOCUMENT_SCAN));
    session.api->livenessCheckDidComplete(success(IdvEvents::FACE_SCAN));
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthSuccess);
    EXPECT_EQ(state.faceAuthState, FaceAuthStatus::faceAuthSuccess);
    session.api->ocrFlowDidComplete(failure(OCR_SCAN_FAILED));
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthSuccess);
    session.api->ocrScanDidComplete(failure(OCR_SCAN_FAILED));
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthFailedOrInitialized);
    session.api->ocrScanDidComplete(success(IdvEvents::OCR_SCAN));
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthSuccess);

    session.backend.outcome = success(IdvEvents::JOIN_SESSION);
    session.api->join("123456", config(), [&](const IdvOutcome& outcome) {
        EXPECT_EQ((*outcome)->data(), "data");
        EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthSuccess) << "reset only after the host heard";
    });
    EXPECT_EQ(session.api->tid(), "data");
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthFailedOrInitialized);
    EXPECT_EQ(state.faceAuthState, FaceAuthStatus::faceAuthFailedOrInitialized);

    state.docAuthState = DocAuthStatus::docAuthSuccess;
    session.api->join("123456", config(), [&](const IdvOutcome&) {
        session.api->acquire(AcquisitionObject::nfcScan, nullptr, {});
        EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthFailedOrInitialized)
            << "a screen shown so soon starts anew";
        session.api->documentFlowDidComplete(success(IdvEvents::DOCUMENT_SCAN));
    });
    EXPECT_EQ(state.docAuthState, DocAuthStatus::docAuthSuccess) << "and what came of it stays";
}

TEST_F(SessionVersions, LeavingIsReportedAsBackNavigation) {
    Session session{InterfaceVersion::v180};
    session.api->update("inform", "at the scanner", {});
    for (const auto code : {CANCELLED_BY_USER, USER_CANCELLED, BACK_NAVIGATION, CANCELLED,
                            USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT, NFC_ERROR}) {
        session.api->ocrFlowDidComplete(failure(code));
        const auto& report = session.backend.reports.back();
        EXPECT_EQ(report.code, kivo::code(code));
        EXPECT_EQ(report.message, code == NFC_ERROR ? "NFC_ERROR" : "BACK_NAVIGATION");
        EXPECT_EQ(report.status, "at the scanner");
        EXPECT_EQ(report.action, "inform");
        EXPECT_EQ(report.os, "I");
    }
}

} // namespace
} // namespace kivo
