#include "support/SessionJournal.hpp"

#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/KeychainWrapper.hpp"
#include "services/mirelo/impl/KivoBE.hpp"

namespace kivo {
namespace {

using enum ResponseCode;

constexpr std::string_view joined =
    R"({"response-type":"data","tid":"T1","idp-config":{"retry-limit":"2",)"
    R"("update-endpoint":"https://id.example/update","status-endpoint":"https://id.example/status",)"
    R"("resume-endpoint":"https://id.example/resume"},)"
    R"("idp-biodata":{"biodata-endpoint":"https://id.example/upload"},)"
    R"("idp-facemap":{"ocridscan-endpoint":"https://id.example/scan"}})";

class SessionJournal : public test::SessionJournal {};

TEST_F(SessionJournal, OfRequests) {
    const Act join = [](auto& api, auto response) { api.join("123456", config(), response); };
    const Act update = [](auto& api, auto response) { api.update("act", "\"one\"", response); };
    const Act status = [](auto& api, auto response) { api.status(response); };
    const Act commit = [](auto& api, auto response) { api.commit(response); };
    const Act resume = [](auto& api, auto) { api.resumeInBrowser(); };
    const Act reset = [](auto& api, auto) { api.reset(); };
    const Act upload = [](auto& api, auto response) {
        api.upload(AcquisitionObject::documentBackImage, "QUJD", response);
    };
    const Act lastUpload = [upload](auto& api, auto response) {
        Attempts::shared().setRetryLimit(1);
        upload(api, response);
    };
    const Act report = [](auto&, auto) {
        for (const auto each : allInterfaceVersions) {
            KivoBE::shared(each).update(ServerReportModel::of(ResponseCode::NFC_ERROR, "T1", ""));
        }
    };
    const Act printStored = [](auto&, auto) {
        const auto& store = KeychainWrapper::standard();
        log::print("stored: " + store.data(std::string{StoredItems::joinAnswer}).value_or("nothing") + " for " +
                   store.data("qr_code").value_or("nothing"));
    };
    expectJournalsOf({
        {"join", join, joined},
        {"stored session", printStored},
        {"settings", [](auto&, auto) { log::print("= " + Config::ocrIDScanBaseURL()); }},
        {"update", update},
        {"report", report},
        {"resume", resume},
        {"commit", commit, "[]"},
        {"upload", upload, "[]"},
        {"refused upload", upload, R"({"response-type":"fail","response-code":"STATUS_BAD_BIODATA"})"},
        {"exhausted upload", upload},
        {"upload whose notice is lost", lastUpload, "{}", withNetwork, ""},
        {"refused update whose notice is lost", update, R"({"response-type":"fail"})", withNetwork, ""},
        {"update with too deep an answer", update, "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["},
        {"status without an answer", status, ""},
        {"status that nobody waits for", [](auto& api, auto) { api.status({}); }},
        {"update without network", update, "{}", withoutNetwork},
        {"status without network", status, "{}", withoutNetwork},
        {"commit without network", commit, "{}", withoutNetwork},
        {"upload without network", lastUpload, "", withoutNetwork},
        {"upload without an address",
         [&](auto& api, auto response) {
             storeJoinAnswer(R"({"tid":"T2","idp-config":{"update-endpoint":"https://id.example/update"}})");
             lastUpload(api, response);
         },
         ""},
        {"join without network", join, "{}", withoutNetwork},
        {"stored after a join without network", printStored},
        {"join without a configuration", [](auto& api, auto response) { api.join("123456", nullptr, response); }},
        {"join to no environment",
         [](auto& api, auto response) { api.join("123456", config(static_cast<SDKEnv>(4)), response); }},
        {"refused join", join, R"({"response-type":"fail","response-code":"STATUS_INVALID_ACTIVATION_CODE"})"},
        {"reset", reset},
        {"reset again", reset},
        {"nothing stored", printStored},
        {"join without an answer", join, ""},
        {"update without a session", update},
        {"status without a session", status},
        {"commit without a session", commit},
        {"resume without a session", resume},
        {"upload without a session", lastUpload},
        {"upload without a session and an attempt",
         [upload](auto& api, auto response) {
             Attempts::shared().setRetryLimit(-1);
             upload(api, response);
         }},
        {"report without a session", report},
        {"join with values of other types", join,
         R"({"response-type":"data","response-code":null,"tid":7,"idp-config":{"retry-limit":2},"idp-biodata":[],"unknown":{}})"},
        {"join that nobody waits for", [](auto& api, auto) { api.join("123456", config(), {}); }, joined},
    });
}

TEST_F(SessionJournal, OfScreens) {
    std::vector<Step> steps{
        {"join", [](auto& api, auto response) { api.join("123456", config(), response); }, joined},
        {"acquired code",
         [](auto& api, auto response) { api.acquire(AcquisitionObject::activationCode, nullptr, response); }},
        {"typed and scanned code",
         [](auto& api, auto) {
             api.activationCodeEntered("123456");
             api.activationCodeScanned("ABC");
         }},
        {"invalid QR code", [](auto& api, auto) { api.invalidQRCodeScanned(); }},
        {"update", [](auto& api, auto response) { api.update("act", "\"one\"", response); }},
        {"close button", [](auto& api, auto) { api.closeButtonPressed(); }},
    };

    struct Screen {
        const char* name;
        void (SessionAPI::*complete)(IdvOutcome);
        IdvEvents event;
        std::vector<ResponseCode> failures;
    };

    constexpr auto leftByText = USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT;
    const Screen screens[] = {
        {"document",
         &SessionAPI::documentFlowDidComplete,
         IdvEvents::DOCUMENT_SCAN,
         {STATUS_BAD_BIODATA, STATUS_AUTH_FAILED, UNKNOWN_QR_CODE, USER_CANCELLED, BACK_NAVIGATION, CANCELLED}},
        {"face",
         &SessionAPI::livenessCheckDidComplete,
         IdvEvents::FACE_SCAN,
         {STATUS_INVALID_SESSION, CANCELLED, leftByText, USER_CANCELLED, TIMEOUT}},
        {"forwarded", &SessionAPI::ocrFlowDidComplete, IdvEvents::OCR_SCAN, {STATUS_BAD_BIODATA}},
        {"ID scan", &SessionAPI::ocrScanDidComplete, IdvEvents::OCR_SCAN, {STATUS_BAD_BIODATA}},
    };
    for (const auto& [screen, complete, event, failures] : screens) {
        const auto with = [this, finish = complete](const IdvOutcome& outcome) -> Act {
            return [=, this](auto& api, auto) {
                setScreenState(!outcome);
                (api.*finish)(outcome);
            };
        };
        steps.push_back({std::string{screen} + ": done", with(std::make_shared<IdvResult>("data", event))});
        for (const auto code : failures) {
            steps.push_back({std::string{screen} + ": " + std::string{name(code)}, with(std::unexpected{code})});
        }
    }
    const Act showDocumentScreenAtOnce = [this](auto& api, auto response) {
        setScreenState(/*isDone=*/true);
        api.join("123456", config(), [&api, response](const IdvOutcome& outcome) {
            response(outcome);
            api.acquire(AcquisitionObject::nfcScan, nullptr, response);
            api.documentFlowDidComplete(outcome);
        });
    };
    const Act acquireOther = [](auto& api, auto) {
        for (const auto object : {AcquisitionObject::selfieImage, AcquisitionObject::documentMainImage,
                                  AcquisitionObject::documentBackImage, static_cast<AcquisitionObject>(99)}) {
            api.acquire(object, nullptr, [](const auto&) { log::print("= from another acquisition"); });
        }
        api.activationCodeEntered("1");
        api.acquire(AcquisitionObject::ocrScan, nullptr, [](const auto&) { log::print("= from the ID scan"); });
        api.activationCodeEntered("2");
    };
    steps.push_back({"join that shows a screen at once", showDocumentScreenAtOnce, joined});
    steps.push_back({"acquisitions that may replace another", acquireOther});
    expectJournalsOf(steps);
}

TEST_F(SessionJournal, AJoinBringsTheRetryLimit) {
    struct Row {
        std::string idpConfig;
        bool applies;
        std::int64_t limit;
    };

    const Row rows[] = {
        {R"({"retry-limit":"3"})", true, 3},
        {R"({"retry-limit":"-2"})", true, -2},
        {R"({"retry-limit":"+4"})", true, 4},
        {R"({"retry-limit":"+-4"})", true, 0},
        {R"({"retry-limit":"3a"})", true, 0},
        {R"({"retry-limit":" 3"})", true, 0},
        {R"({"retry-limit":""})", true, 0},
        {R"({"retry-limit":"9223372036854775808"})", true, 0},
        {R"({"update-endpoint":"https://localhost/"})", false, 77},
        {"{}", false, 77},
    };
    const Act upload = [](auto& api, auto response) { api.upload(AcquisitionObject::selfieImage, "A", response); };
    const auto api = std::static_pointer_cast<SessionAPI>(KivoSDK::load("KEY", "18"));
    for (const auto& [idpConfig, applies, limit] : rows) {
        SCOPED_TRACE(idpConfig);
        Attempts::shared().setRetryLimit(77);
        const auto answer = R"({"response-type":"data","tid":"T1","idp-config":)" + idpConfig + "}";
        journalOf({"", [](auto& session, auto response) { session.join("123456", config(), response); }, answer}, *api);
        EXPECT_EQ(KivoSDK::shouldApplyRetryLimit(), applies);
        EXPECT_EQ(Attempts::shared().retryLimit(), limit);
        const auto afterwards = journalOf({"", upload}, *api);
        EXPECT_EQ(std::ranges::count(afterwards, "= RETRY_LIMIT_REACHED"), limit < 1 ? 1 : 0);
    }
}

TEST_F(SessionJournal, AJoinGoesToThePageOfItsEnvironment) {
    const auto api = std::static_pointer_cast<SessionAPI>(KivoSDK::load("KEY", "18"));
    std::string dates;
    const auto pages = [&] {
        std::vector<std::string> urls;
        for (const auto environment : {SDKEnv::PROD, SDKEnv::PREPROD, SDKEnv::TEST, SDKEnv::DEV}) {
            const Act join = [&](auto& session, auto heard) {
                session.join("1", config(environment), heard);
                dates += CommunicationSecurityManager::shared().certificateExpiryDates(/*warn=*/false).leaf + ' ';
            };
            journalOf({"", join}, *api);
            urls.push_back(sessions->requests.back().request.url);
        }
        return urls;
    };
    EXPECT_THAT(pages(), testing::ElementsAre("https://identity.example/enrol/join.html",
                                              "https://preprod.identity.example/enrol/join.html",
                                              "https://test.identity.example/enrol/join.html",
                                              "https://dev.identity.example/enrol/join.html"));
    EXPECT_EQ(dates, "09/10/2025 11/09/2025 06/04/2026  ");
    EXPECT_FALSE(Deployment::current().faceTecProduction);
    EXPECT_FALSE(Deployment::current().requiresPins);
    Deployment::install(
        {.joinPages = {"https://a.example", "https://b.example", "https://c.example", "https://d.example"}});
    EXPECT_THAT(pages(), testing::ElementsAre("https://a.example", "https://b.example", "https://c.example",
                                              "https://d.example"));
}

} // namespace
} // namespace kivo
