#include "ServiceCheck.hpp"

#include "Judge.hpp"
#include "program/Program.hpp"
#include "program/Temporary.hpp"

#include <kivo/KivoSDK.hpp>
#include <kivo/SdkVersions.hpp>
#include <kivo/platform/LinuxServices.hpp>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <utility>
#include <vector>

namespace simulation {
namespace {

using namespace kivo::platform;
using Json = nlohmann::ordered_json;

/// Sends requests as the library does, and waits for each answer.
class Wire {
public:
    Wire(UrlSessions& sessions, std::chrono::seconds patience)
        : sessions_{sessions}
        , patience_{patience}
        , session_{make(sessionAnswerLimit)} {}

    UrlOutcome session(const std::string& url, std::string body) {
        ++count_;
        return send(*session_, url, {{"Content-Type", "application/json; charset=UTF-8"}}, std::move(body));
    }

    /// Each scan has a connection of its own.
    UrlOutcome scan(const std::string& url, std::vector<HttpHeader> headers, std::string body) {
        ++count_;
        const auto session = make(scanAnswerLimit);
        return send(*session, url, std::move(headers), std::move(body));
    }

    int count() const { return count_; }

private:
    static constexpr std::size_t sessionAnswerLimit = std::size_t{1024} * 1024;
    static constexpr std::size_t scanAnswerLimit = std::size_t{16} * 1024 * 1024;

    std::shared_ptr<UrlSession> make(std::size_t answerLimit) const {
        UrlSessionConfiguration configuration;
        configuration.requestTimeout = configuration.resourceTimeout = patience_;
        configuration.responseLimit = answerLimit;
        return sessions_.make(configuration);
    }

    UrlOutcome send(UrlSession& session, const std::string& url, std::vector<HttpHeader> headers, std::string body) {
        UrlRequest request{.url = url, .method = "POST", .headers = std::move(headers), .body = std::move(body)};
        request.timeout = patience_;
        std::promise<UrlOutcome> answer;
        const auto task =
            session.dataTask(std::move(request), [&](UrlOutcome outcome) { answer.set_value(std::move(outcome)); });
        return answer.get_future().get();
    }

    UrlSessions& sessions_;
    const std::chrono::seconds patience_;
    const std::shared_ptr<UrlSession> session_;
    int count_ = 0;
};

Json joinBody(const Options& options) {
    return {{"kivo-action", "init"},
            {"kivo-init-code", options.codes.front()},
            {"kivo-device-code", std::string{kivo::SdkVersions::all().back()} + "01" + options.key},
            {"app-info",
             {{"appVersion", "1.0.1"},
              {"os", "iOS 12"},
              {"networkType", "WiFi"},
              {"NetworkIpAddress", "192.0.2.7"},
              {"networkMacAddress", ""},
              {"deviceModel", "x86_64"},
              {"deviceSerialNo", ""},
              {"expiryDateLeafCert", ""},
              {"expiryDateIntermediateCert", ""},
              {"sdkVersion", KIVO_SDK_VERSION},
              {"deviceId", "00000000-0000-4000-8000-000000000000"},
              {"apiLevel", "NA"}}},
            {"app-config",
             {{"target-env", "TEST"},
              {"kivo-app-doclist", "PASSPORT"},
              {"kivo-expiry-grace", ""},
              {"kivo-facematch-min", ""},
              {"kivo-doc-issuers", ""},
              {"kivo-images", ""}}}};
}

/// Sixteen bytes in Base64, for a scan and for a picture.
constexpr auto image = "AAECAwQFBgcICQoLDA0ODw==";

/// Walks one session, from its join to its commit.
class Walk {
public:
    Walk(const Options& options, Wire& wire, Judge& judge)
        : options_{options}
        , wire_{wire}
        , judge_{judge} {}

    void go() {
        judge_.refusal("join without a body", wire_.session(options_.checked, ""), "STATUS_BAD_PROTOCOL");
        const auto joined = judge_.session("join", wire_.session(options_.checked, joinBody(options_).dump()));
        if (!joined || !isJoined(*joined)) {
            program::complain("the code has not joined, so nothing else could be checked");
            return;
        }
        description_ = joined->answer;
        const auto tid = description_.at("tid").get<std::string>();
        operation("status", "idp-config", "status-endpoint", Json::object());
        operation("update", "idp-config", "update-endpoint",
                  {{"kivo-action", "inform"}, {"message", "A check"}, {"tid", tid}});
        judge_.refusal(
            "update of a foreign session",
            wire_.session(setting("idp-config", "update-endpoint"),
                          Json{{"kivo-action", "inform"}, {"message", "A check"}, {"tid", tid + "-foreign"}}.dump()),
            "");
        operation("upload", "idp-biodata", "biodata-endpoint",
                  {{"source", "remote"}, {"acquisition-object", 4}, {"data", image}});
        operation("notice", "idp-config", "update-endpoint",
                  {{"kivo-action", "inform"}, {"message", "I:Attempts count decremented to 2"}, {"tid", tid}});
        scan("face scan", "facemap-endpoint", "/enrollment-3d",
             {{"faceScan", image},
              {"auditTrailImage", image},
              {"lowQualityAuditTrailImage", image},
              {"externalDatabaseRefID", ""}});
        scan("ID scan", "ocridscan-endpoint", "/idscan-only", {{"idScan", image}, {"idScanFrontImage", image}});
        operation("commit", "idp-config", "resume-endpoint", Json::object());
    }

private:
    bool isJoined(const Judge::Verdict& verdict) {
        if (!verdict.refusedWith.empty()) {
            judge_.tell("join", "the code is refused with " + verdict.refusedWith, "a code that joins");
            return false;
        }
        return judge_.description(verdict.answer);
    }

    std::string setting(const char* group, const char* name) const {
        return description_.at(group).value(name, std::string{});
    }

    void operation(const std::string& step, const char* group, const char* endpoint, const Json& body) {
        noteRefusal(step, judge_.session(step, wire_.session(setting(group, endpoint), body.dump())));
    }

    void scan(const std::string& step, const char* endpoint, const char* path, const Json& body) {
        const auto address = setting("idp-facemap", endpoint);
        if (address.empty()) {
            program::complain(step + ": the session has no \"" + endpoint + "\", so no scan is checked");
            return;
        }
        const std::string agent = "kivo-simulator";
        noteRefusal(step, judge_.scan(step, wire_.scan(address + path,
                                                       {{"Content-Type", "application/json"},
                                                        {"X-Device-Key", setting("idp-facemap", "facemap-device-key")},
                                                        {"User-Agent", agent},
                                                        {"X-User-Agent", agent}},
                                                       body.dump())));
    }

    static void noteRefusal(const std::string& step, const std::optional<Judge::Verdict>& verdict) {
        if (verdict && !verdict->refusedWith.empty()) {
            program::complain(step + ": refused with " + verdict->refusedWith + ", which a service may do");
        }
    }

    const Options& options_;
    Wire& wire_;
    Judge& judge_;
    Json description_;
};

} // namespace

int checkService(const Options& options) {
    kivo::KivoSDK::setLogLevel(kivo::LogLevel::off);
    const program::TemporaryFolder folder{"kivo-simulator"};
    const auto services =
        linuxServices({.mainBundle = {}, .dataFolder = folder.path(), .trustedCertificates = options.trusted});
    int findings = 0;
    const auto print = [](const Json& line) {
        std::printf("%s\n", line.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
        std::fflush(stdout);
    };
    Judge judge{options.timeout, [&](const Finding& finding) {
                    ++findings;
                    if (options.json) {
                        print({{"type", "finding"},
                               {"step", finding.step},
                               {"found", finding.found},
                               {"expected", finding.expected}});
                    } else {
                        std::printf("%s: %s; expected %s\n", finding.step.c_str(),
                                    program::printable(finding.found).c_str(), finding.expected.c_str());
                        std::fflush(stdout);
                    }
                }};
    Wire wire{*services.urlSessions, options.timeout};
    Walk{options, wire, judge}.go();
    if (options.json) {
        print({{"type", "end"}, {"requests", wire.count()}, {"findings", findings}});
    } else if (findings == 0) {
        std::printf("The service keeps the protocol in %d requests.\n", wire.count());
    }
    return findings == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace simulation
