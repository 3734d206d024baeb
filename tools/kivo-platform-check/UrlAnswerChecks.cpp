#include "UrlRig.hpp"

#include <algorithm>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using simulator::CertificateFlaw;
using simulator::Fault;
using std::chrono::steady_clock;

void reportsEveryAnswer(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();
    const std::pair<Fault, std::string> rows[] = {
        {Fault::answer("hello"), "200 hello"},    {Fault::emptyBody(), "200 "},
        {Fault::noBody(), "204 without body"},    {Fault::status(205), "205 without body"},
        {Fault::status(304), "304 without body"}, {Fault::status(301, "nowhere"), "301 nowhere"},
        {Fault::status(400, "bad"), "400 bad"},   {Fault::status(500, "oops"), "500 oops"},
    };
    for (const auto& [fault, seen] : rows) {
        rig.answer(fault);
        trial.expectEqual("the answer", rig.summaryOf(*session, {.url = rig.url()}), seen);
    }
    trial.expectEqual("requests", rig.requests(), std::size(rows));
    trial.expectEqual("connections", rig.server.connections(), 1U);
}

void givesTheLastHeaders(Trial& trial) {
    UrlRig rig{trial};
    rig.answer(Fault::redirect(rig.url("status")));
    const auto outcome = rig.exchange(*rig.session(), {.url = rig.url()});
    trial.expect(outcome && *outcome && (*outcome)->body == "quick", "the answer of the redirect's target");
    if (outcome && *outcome) {
        const auto& headers = (*outcome)->headers;
        trial.expectEqual("headers named Location",
                          std::ranges::count(headers, "Location", &platform::HttpHeader::first), 0);
        trial.expect(std::ranges::count(headers, platform::HttpHeader{"Content-Length", "5"}) == 1,
                     "the length of the last answer, came " + shown(headers));
    }
}

void refusesWhatIsNotWhole(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();
    const std::pair<Fault, std::string> rows[] = {
        {Fault::truncate(), "connectionLost"}, {Fault::reset(), "connectionLost"}, {Fault::garbage(), "badAnswer"}};
    for (const auto& [fault, kind] : rows) {
        rig.answer(fault);
        const auto outcome = rig.exchange(*session, {.url = rig.url() + "?secret=1",
                                                     .method = "POST",
                                                     .headers = {{"X-Key", "hidden"}},
                                                     .body = "confidential"});
        trial.expectEqual("the failure", outcome ? summary(*outcome) : "no completion", kind);
        if (outcome && !*outcome) {
            const auto& text = outcome->error().text;
            trial.expect(!text.empty(), "a text for the log");
            for (const auto* secret : {"/session", "secret", "hidden", "confidential"}) {
                trial.expect(text.find(secret) == std::string::npos, "no secret in " + shown(text));
            }
        }
    }
}

void boundsAnswers(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session({.responseLimit = 1000, .headLimit = 4096});
    rig.answer(Fault::largeBody(1000));
    trial.expectEqual("a body of the longest length", rig.summaryOf(*session, {.url = rig.url()}).substr(0, 4), "200 ");
    for (const auto& fault : {Fault::largeBody(1001), Fault::largeBody(std::size_t{1} << 30),
                              Fault::redirect(rig.url("status") + "?" + std::string(5000, 'x'))}) {
        rig.answer(fault);
        trial.expectEqual("a longer one", rig.summaryOf(*session, {.url = rig.url()}), "answerTooLarge");
    }
}

void keepsTimeLimits(Trial& trial) {
    UrlRig rig{trial};
    rig.answer(Fault::drop());

    const struct {
        std::chrono::milliseconds request, session, resource;
        std::chrono::seconds idle;
    } rows[] = {
        {150ms, 60s, 60s, 0s}, {60s, 150ms, 60s, 0s}, {60s, 60s, 150ms, 0s}, {0ms, 60s, 60s, 0s}, {60s, 60s, 60s, 1s}};

    for (const auto& row : rows) {
        const auto session =
            rig.session({.requestTimeout = row.session, .resourceTimeout = row.resource, .idleTimeout = row.idle});
        const auto start = steady_clock::now();
        trial.expectEqual("a request that is never answered",
                          rig.summaryOf(*session, {.url = rig.url(), .timeout = row.request}), "timedOut");
        trial.expect(steady_clock::now() - start < 5s, "the shortest limit counts");
    }
    rig.answer(Fault::slowBody(60s));
    trial.expectEqual("an answer that comes byte by byte",
                      rig.summaryOf(*rig.session(), {.url = rig.url(), .timeout = 150ms}), "timedOut");
}

void judgesServers(Trial& trial) {
    UrlRig rig{trial};
    for (const auto flaw : {CertificateFlaw::expired, CertificateFlaw::wrongHost, CertificateFlaw::selfSigned,
                            CertificateFlaw::untrustedAuthority}) {
        rig.answer(Fault::certificate(flaw));
        trial.expectEqual("a certificate with flaw " + std::to_string(static_cast<int>(flaw)),
                          rig.summaryOf(*rig.session(), {.url = rig.url()}), "serverCertificateUntrusted");
    }
    trial.expectEqual("requests sent to such servers", rig.requests(), 0U);
}

void tellsWhyNoConnection(Trial& trial) {
    UrlRig rig{trial};
    const auto closed = [] {
        const simulator::IdentityService gone;
        return gone.port();
    }();
    const auto session = rig.session();
    trial.expectEqual("a closed port", rig.summaryOf(*session, {.url = "https://localhost:" + std::to_string(closed)}),
                      "cannotConnect");
    trial.expectEqual("a name that does not exist", rig.summaryOf(*session, {.url = "https://nonexistent.invalid/"}),
                      "cannotFindHost");
}

void sendsNothingTwice(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();
    const platform::UrlRequest upload{.url = rig.url(), .method = "POST", .body = "upload"};
    for (const auto& fault : {Fault::reset(), Fault::truncate()}) {
        rig.answer(Fault::answer("hello"));
        trial.expectEqual("a first request", rig.summaryOf(*session, upload), "200 hello");
        const auto before = rig.requests();
        rig.answer(fault);
        trial.expectEqual("one whose connection ends", rig.summaryOf(*session, upload), "connectionLost");
        trial.expectEqual("times it was sent", rig.requests() - before, 1U);
    }
}

} // namespace

Checks urlAnswerChecks() {
    const auto* const seam = "UrlSession";
    return {
        {seam, "reports every HTTP answer as a response, over one connection", reportsEveryAnswer},
        {seam, "gives the headers of the last answer alone", givesTheLastHeaders},
        {seam, "refuses an answer that is not whole, and reveals nothing of the request", refusesWhatIsNotWhole},
        {seam, "bounds body and head of an answer", boundsAnswers},
        {seam, "keeps the shortest time limit", keepsTimeLimits},
        {seam, "sends nothing to a server that it cannot trust", judgesServers},
        {seam, "tells why no connection came about", tellsWhyNoConnection},
        {seam, "sends no request twice", sendsNothingTwice},
    };
}

} // namespace kivo::check
