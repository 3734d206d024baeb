#include "Configuration/logging/Log.hpp"
#include "Configuration/session/ApplicationInformation.hpp"
#include "Configuration/session/Config.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "impl/SessionAPI.hpp"
#include "services/mirelo/impl/KivoBE.hpp"
#include "support/ScriptedUrlSessions.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

namespace kivo {
namespace {

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

/// A log line as "level operation: message" once its form is checked; any other line as it is.
std::string plain(std::string line) {
    constexpr std::string_view separator = " \u2013 ";
    for (const auto& [marker, level] :
         {std::pair{"\u2753", "debug"}, {"\u2139\uFE0F", "info"}, {"\u26A0\uFE0F", "warning"}, {"\u274C", "error"}}) {
        if (line.starts_with(marker)) {
            const auto place = line.find(separator) + separator.size();
            const auto operation = line.find(separator, place);
            EXPECT_THAT(line.substr(place, operation - place), testing::MatchesRegex("[A-Za-z]+\\.[ch]pp:[0-9]+"));
            const auto rest = line.substr(operation + separator.size());
            const auto message = rest.find(separator);
            return std::string{level} + " " + rest.substr(0, message) + ": " + rest.substr(message + separator.size());
        }
    }
    return line;
}

/// A host over a network that the test answers for. All that can be seen of the SDK is printed on standard output: its
/// log lines, "> " and each request as it is sent, "= " and what the host hears.
class SessionJournal : public ::testing::Test {
protected:
    SessionJournal() {
        auto services = platform::linuxServices({.mainBundle = folder.path() / "Host.bundle",
                                                 .dataFolder = folder.path() / "data",
                                                 .trustedCertificates = {}});
        services.mainQueue = mainLoop;
        services.reachability = network;
        services.urlSessions = sessions;
        platform::install(services);
        KivoSDK::setLogLevel(LogLevel::debug);
        testing::internal::CaptureStdout();
        // Said once, in whatever version is first.
        Environment::applicationInformation();
        testing::internal::GetCapturedStdout();
        sessions->onRequest = [](const platform::UrlRequest& request) {
            EXPECT_EQ(request.timeout, std::chrono::seconds{60});
            log::print("> " + request.url + " " + request.body.substr(0, request.body.find(R"("app-info")")));
        };
    }

    static std::shared_ptr<AcquisitionConfig> config(SDKEnv environment = SDKEnv::TEST) {
        return std::make_shared<AcquisitionConfig>(environment, "PASSPORT", "P6M", "0.8", "UTO", "face");
    }

    /// What `act` leads to when its first request is answered so ("" is a time-out) and each later one with "{}".
    std::vector<std::string> journalOf(const std::function<void(IdvCompletion)>& act, std::string_view answer) {
        testing::internal::CaptureStdout();
        act([](const IdvOutcome& outcome) {
            log::print("= " + (outcome ? std::string{IdvEventsHelper::eventName((*outcome)->responseType())} + " " +
                                             (*outcome)->data()
                                       : std::string{name(outcome.error())}));
        });
        for (; answered < sessions->requests.size(); answer = "{}") {
            const auto request = sessions->requests[answered++];
            if (answer.empty()) {
                request.answer(std::unexpected{platform::UrlError{platform::UrlErrorKind::timedOut, "no answer"}});
            } else {
                request.answer(std::string{answer});
            }
        }
        mainLoop->drain();
        std::istringstream output{testing::internal::GetCapturedStdout()};
        std::vector<std::string> lines;
        for (std::string line; std::getline(output, line);) {
            lines.push_back(plain(line));
        }
        return lines;
    }

    test::TemporaryFolder folder;
    std::shared_ptr<simulator::Reachability> network = std::make_shared<simulator::Reachability>();
    std::shared_ptr<platform::RunLoop> mainLoop =
        std::make_shared<platform::RunLoop>(std::make_shared<platform::ManualClock>());
    std::shared_ptr<test::ScriptedUrlSessions> sessions = std::make_shared<test::ScriptedUrlSessions>();
    std::size_t answered = 0;
};

TEST_F(SessionJournal, AJoinGoesToThePageOfItsEnvironment) {
    const auto session = KivoSDK::load("KEY", "18");
    const auto pages = [&] {
        std::vector<std::string> urls;
        for (const auto environment : {SDKEnv::PROD, SDKEnv::PREPROD, SDKEnv::TEST, SDKEnv::DEV}) {
            journalOf([&](auto response) { session->join("123456", config(environment), response); }, "{}");
            urls.push_back(sessions->requests.back().request.url);
        }
        return urls;
    };
    EXPECT_THAT(pages(), testing::ElementsAre("https://identity.example/enrol/join.html",
                                              "https://preprod.identity.example/enrol/join.html",
                                              "https://test.identity.example/enrol/join.html",
                                              "https://dev.identity.example/enrol/join.html"));
    EXPECT_FALSE(Deployment::current().faceTecProduction);
    EXPECT_FALSE(Deployment::current().requiresPins);
    Deployment::install(
        {.joinPages = {"https://a.example", "https://b.example", "https://c.example", "https://d.example"}});
    EXPECT_THAT(pages(), testing::ElementsAre("https://a.example", "https://b.example", "https://c.example",
                                              "https://d.example"));
}

/// The journal of each step as the data file has it, for one version.
std::map<std::string, std::vector<std::string>> expectedJournals(std::string_view version) {
    std::map<std::string, std::vector<std::string>> journals;
    std::ifstream file{KIVO_TEST_DATA "/session-journal.txt"};
    std::string step;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            step = line.substr(3);
        } else if (!step.empty() && !line.empty() && line.substr(0, 2) <= version && version <= line.substr(3, 2)) {
            line = replaced(line.substr(6), "CONFIG",
                            "[target-env: TEST, kivo-app-doclist: PASSPORT, kivo-expiry-grace: P6M, "
                            "kivo-facematch-min: 0.8, kivo-doc-issuers: UTO, kivo-images: face]");
            line = replaced(line, "CLIENT", "KivoBE_" + std::string{version} + "0");
            journals[step].push_back(replaced(line, "VERSION", version));
        }
    }
    return journals;
}

TEST_F(SessionJournal, EveryVersionSaysSendsAndAnswersWhatItShould) {
    struct Step {
        const char* name;
        std::function<void(SessionAPI& api, IdvCompletion response)> act;
        std::string_view answer = "{}";
    };

    const auto join = [](SessionAPI& api, auto response) { api.join("123456", config(), response); };
    const auto update = [](SessionAPI& api, auto response) { api.update("act", "\"one\"", response); };
    const auto status = [](SessionAPI& api, auto response) { api.status(response); };
    const auto commit = [](SessionAPI& api, auto response) { api.commit(response); };
    const auto reset = [](SessionAPI& api, auto) { api.reset(); };
    const auto upload = [](SessionAPI& api, auto response) {
        api.upload(AcquisitionObject::documentBackImage, "QUJD", response);
    };
    const auto lastUpload = [upload](SessionAPI& api, auto response) {
        Attempts::shared().setRetryLimit(1);
        upload(api, response);
    };
    constexpr std::string_view session =
        R"({"response-type":"data","tid":"T1","idp-config":{"retry-limit":"2",)"
        R"("update-endpoint":"https://id.example/update","status-endpoint":"https://id.example/status",)"
        R"("resume-endpoint":"https://id.example/resume"},)"
        R"("idp-biodata":{"biodata-endpoint":"https://id.example/upload"},)"
        R"("idp-facemap":{"ocridscan-endpoint":"https://id.example/scan"}})";
    constexpr std::string_view noAddress =
        R"({"tid":"T2","idp-config":{"update-endpoint":"https://id.example/update"}})";
    const Step steps[] = {
        {"join", join, session},
        {"settings", [](SessionAPI&, auto) { log::print("= " + Config::ocrIDScanBaseURL()); }},
        {"update", update},
        {"commit", commit, "[]"},
        {"upload", upload, "[]"},
        {"refused upload", upload, R"({"response-type":"fail","response-code":"STATUS_BAD_BIODATA"})"},
        {"exhausted upload", upload},
        {"status without an answer", status, ""},
        {"close button", [](SessionAPI& api, auto) { api.closeButtonPressed(); }},
        {"update without network",
         [&](SessionAPI& api, auto response) {
             network->setReachable(false);
             update(api, response);
         }},
        {"status without network", status},
        {"commit without network", commit},
        {"upload without network", lastUpload, ""},
        {"upload without an address",
         [&](SessionAPI& api, auto response) {
             network->setReachable(true);
             storeJoinAnswer(noAddress);
             lastUpload(api, response);
         },
         ""},
        {"join without network",
         [&](SessionAPI& api, auto response) {
             network->setReachable(false);
             join(api, response);
         }},
        {"refused join",
         [&](SessionAPI& api, auto response) {
             network->setReachable(true);
             join(api, response);
         },
         R"({"response-type":"fail","response-code":"STATUS_INVALID_ACTIVATION_CODE"})"},
        {"reset", reset},
        {"reset again", reset},
        {"join without an answer", join, ""},
        {"update without a session", update},
        {"status without a session", status},
        {"commit without a session", commit},
        {"upload without a session", lastUpload},
        {"report without a session",
         [](SessionAPI&, auto) {
             for (const auto each : allInterfaceVersions) {
                 KivoBE::shared(each).update(ServerReportModel::of(ResponseCode::NFC_ERROR, "T1", ""));
             }
         }},
    };
    for (const auto version : allInterfaceVersions) {
        auto expected = expectedJournals(namesOf(version).code);
        const auto api = std::static_pointer_cast<SessionAPI>(KivoSDK::load("KEY", namesOf(version).code));
        for (const auto& step : steps) {
            SCOPED_TRACE(std::string{step.name} + ", " + std::string{namesOf(version).sessionApi});
            EXPECT_THAT(journalOf([&](auto response) { step.act(*api, response); }, step.answer),
                        testing::ElementsAreArray(expected[step.name]));
        }
    }
}

} // namespace
} // namespace kivo
