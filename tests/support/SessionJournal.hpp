#pragma once

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/ApplicationInformation.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "impl/SessionAPI.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "support/HostFixture.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

namespace kivo::test {

/// A log line as "level operation: message" once its form is checked; any other line as it is.
inline std::string plain(std::string line) {
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

/// The journal of each step as the data file has it, for one version.
inline std::map<std::string, std::vector<std::string>> expectedJournals(std::string_view version) {
    const std::pair<std::string_view, std::string> abbreviations[] = {
        {"CONFIG", "[target-env: TEST, kivo-app-doclist: PASSPORT, kivo-expiry-grace: P6M, kivo-facematch-min: 0.8, "
                   "kivo-doc-issuers: UTO, kivo-images: face]"},
        {"CLIENT", "KivoBE_" + std::string{version} + "0"},
        {"SDK_VERSION", KIVO_SDK_VERSION},
        {"VERSION", std::string{version}},
    };
    std::map<std::string, std::vector<std::string>> journals;
    std::ifstream file{KIVO_TEST_DATA "/session-journal.txt"};
    std::string step;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            step = line.substr(3);
        } else if (!step.empty() && !line.empty() && line.substr(0, 2) <= version && version <= line.substr(3, 2)) {
            line = line.substr(6);
            for (const auto& [what, with] : abbreviations) {
                for (auto at = line.find(what); at != line.npos; at = line.find(what, at + with.size())) {
                    line.replace(at, what.size(), with);
                }
            }
            journals[step].push_back(line);
        }
    }
    return journals;
}

/// A host over a network that the test answers for. All that can be seen of the SDK is printed on standard output: its
/// log lines, "> " and each request as it is sent, "= " and what the host hears, and how far the screens have come.
class SessionJournal : public OfflineHost {
protected:
    using Act = std::function<void(SessionAPI& api, IdvCompletion response)>;

    /// Something to do, and the answers to the first request that it leads to and to later ones; "" is a time-out.
    struct Step {
        std::string name;
        Act act;
        std::string_view answer = "{}";
        bool hasNetwork = true;
        std::string_view laterAnswers = "{}";
    };

    static constexpr bool withNetwork = true;
    static constexpr bool withoutNetwork = false;

    SessionJournal() {
        device->addresses = {{"lo", platform::AddressFamily::ipv4, "127.0.0.1"},
                             {"en0", platform::AddressFamily::ipv4, "192.0.2.7"},
                             {"pdp_ip0", platform::AddressFamily::ipv6, "2001:db8::7"}};
        installServices(bundle());
        services.urlSessions = sessions;
        platform::install(services);
        KivoSDK::setLogLevel(LogLevel::debug);
        testing::internal::CaptureStdout();
        // Said once, in whatever version is first.
        CommunicationSecurityManager::shared().setSdkEnvironment(SDKEnv::TEST);
        Environment::applicationInformation();
        testing::internal::GetCapturedStdout();
        sessions->onRequest = [](const platform::UrlRequest& request) {
            log::print("> " + request.url + " " + request.body);
        };
    }

    static std::string currentScreenState() {
        const bool isDocumentDone = UIStateManager::shared().docAuthState == DocAuthStatus::docAuthSuccess;
        const bool isFaceDone = UIStateManager::shared().faceAuthState == FaceAuthStatus::faceAuthSuccess;
        return std::string{"document "} + (isDocumentDone ? "done" : "to do") + ", face " +
               (isFaceDone ? "done" : "to do");
    }

    void setScreenState(bool isDone) {
        using enum DocAuthStatus;
        using enum FaceAuthStatus;
        UIStateManager::shared().docAuthState = isDone ? docAuthSuccess : docAuthFailedOrInitialized;
        UIStateManager::shared().faceAuthState = isDone ? faceAuthSuccess : faceAuthFailedOrInitialized;
        screenState = currentScreenState();
    }

    void printNewScreenState() {
        const auto now = currentScreenState();
        if (std::exchange(screenState, now) != now) {
            log::print(now);
        }
    }

    /// Prints what the host hears.
    IdvCompletion host() {
        return [this](const IdvOutcome& outcome) {
            printNewScreenState();
            log::print("= " +
                       (outcome ? std::string{IdvEventsHelper::eventName((*outcome)->responseType())} + " " +
                                      (*outcome)->data()
                                : std::string{name(outcome.error())}) +
                       (isMainQueueRunning ? " on the main queue" : ""));
        };
    }

    static void expectUsualLimits(const ScriptedUrlSessions::Request& request) {
        using namespace std::chrono_literals;
        EXPECT_EQ(request.request.method, "POST");
        EXPECT_EQ(request.request.timeout, 60s);
        EXPECT_EQ(request.configuration.requestTimeout, 180s);
        EXPECT_EQ(request.configuration.resourceTimeout, 180s);
        EXPECT_EQ(request.configuration.responseLimit, std::size_t{1} << 20);
        EXPECT_THAT(request.configuration.headers,
                    testing::ElementsAre(testing::Pair("Content-Type", "application/json; charset=UTF-8")));
    }

    /// What a step leads to.
    std::vector<std::string> journalOf(const Step& step, SessionAPI& api) {
        testing::internal::CaptureStdout();
        network->setReachable(step.hasNetwork);
        step.act(api, host());
        for (auto answer = step.answer; answered < sessions->requests.size(); answer = step.laterAnswers) {
            const auto request = sessions->requests[answered++];
            expectUsualLimits(request);
            if (answer.empty()) {
                request.answer(std::unexpected{platform::UrlError{platform::UrlErrorKind::timedOut, "no answer"}});
            } else {
                request.answer(std::string{answer});
            }
        }
        isMainQueueRunning = true;
        mainLoop->drain();
        isMainQueueRunning = false;
        printNewScreenState();
        for (const auto& url : std::exchange(workspace->opened, {})) {
            log::print("open " + url);
        }
        std::istringstream output{testing::internal::GetCapturedStdout()};
        std::vector<std::string> lines;
        for (std::string line; std::getline(output, line);) {
            lines.push_back(plain(line));
        }
        return lines;
    }

    /// Goes all the steps with one version after the other.
    void expectJournalsOf(const std::vector<Step>& steps) {
        for (const auto version : allInterfaceVersions) {
            auto expected = expectedJournals(namesOf(version).code);
            const auto api = std::static_pointer_cast<SessionAPI>(KivoSDK::load("KEY", namesOf(version).code));
            setScreenState(/*isDone=*/true);
            for (const auto& step : steps) {
                SCOPED_TRACE(step.name + ", " + std::string{namesOf(version).sessionApi});
                EXPECT_THAT(journalOf(step, *api), testing::ElementsAreArray(expected[step.name]));
            }
        }
    }

    std::shared_ptr<ScriptedUrlSessions> sessions = std::make_shared<ScriptedUrlSessions>();
    std::size_t answered = 0;
    bool isMainQueueRunning = false;
    std::string screenState;
};

} // namespace kivo::test
