#include "UrlRig.hpp"

#include <algorithm>
#include <cctype>

namespace kivo::check {
namespace {

using simulator::Fault;

/// The values that a recorded request has for a header, whatever its letters' case.
std::vector<std::string> valuesOf(const simulator::RecordedRequest& request, std::string_view name) {
    std::vector<std::string> values;
    for (const auto& [key, value] : request.headers) {
        if (std::ranges::equal(key, name, [](unsigned char one, unsigned char other) {
                return std::tolower(one) == std::tolower(other);
            })) {
            values.push_back(value);
        }
    }
    return values;
}

using Values = std::vector<std::string>;

void sendsTheRequest(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session({.headers = {{"X-Session", "s"}, {"Content-Type", "text/plain"}}});
    const std::string body{"a\0b\xFF", 4};
    rig.exchange(*session, {.url = rig.url() + "?q#f",
                            .method = "POST",
                            .headers = {{"content-type", "application/json"}, {"X-Own", "o"}, {"Content-Length", "7"}},
                            .body = body});
    const auto all = rig.server.requests();
    trial.expectEqual("requests", all.size(), 1U);
    if (all.size() == 1) {
        const auto& request = all.front();
        trial.expectEqual("the method", request.method, "POST");
        trial.expectEqual("the body", request.body, body);
        trial.expectEqual("X-Session", valuesOf(request, "X-Session"), Values{"s"});
        trial.expectEqual("X-Own", valuesOf(request, "X-Own"), Values{"o"});
        trial.expectEqual("Content-Type, the request's own", valuesOf(request, "Content-Type"),
                          Values{"application/json"});
        trial.expectEqual("Content-Length", valuesOf(request, "Content-Length"), Values{"4"});
    }
}

void sendsHttpsOnly(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();
    const auto good = rig.url();
    const auto port = std::to_string(rig.server.port());
    const std::string zero(1, '\0');

    const struct {
        platform::UrlRequest request;
        std::string kind;
    } rows[] = {
        {{.url = ""}, "badUrl"},
        {{.url = "localhost"}, "badUrl"},
        {{.url = "https:/localhost"}, "badUrl"},
        {{.url = "https:///localhost"}, "badUrl"},
        {{.url = good + "a b"}, "badUrl"},
        {{.url = good + "{x}"}, "badUrl"},
        {{.url = "https://user@localhost:" + port}, "badUrl"},
        {{.url = "http://localhost:" + port}, "unsupportedScheme"},
        {{.url = "ftp://localhost/"}, "unsupportedScheme"},
        {{.url = good, .headers = {{"X-A", "1\r\nX-B: 2"}}}, "unknown"},
        {{.url = good, .headers = {{"X-A", "1\nX-B: 2"}}}, "unknown"},
        {{.url = good, .headers = {{"X-A", zero}}}, "unknown"},
        {{.url = good, .headers = {{"X-A: 1\r\nX-B", "2"}}}, "unknown"},
        {{.url = good, .method = "GET / HTTP/1.1\r\nX:"}, "unknown"},
    };

    for (const auto& row : rows) {
        const auto outcome = rig.exchange(*session, row.request);
        trial.expectEqual("the failure of " + shown(row.request.url), outcome ? summary(*outcome) : "no completion",
                          row.kind);
        trial.expect(!outcome || *outcome || !outcome->error().text.empty(), "a text for the log");
    }
    trial.expectEqual("connections", rig.server.connections(), 0U);
}

void followsRedirects(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();

    const struct {
        int status;
        std::string method;
        std::string followedBy;
        std::string body;
    } rows[] = {{301, "POST", "GET", ""},      {302, "POST", "GET", ""},      {303, "POST", "GET", ""},
                {307, "POST", "POST", "body"}, {308, "POST", "POST", "body"}, {302, "PUT", "PUT", "body"},
                {303, "PUT", "GET", ""}};

    for (const auto& row : rows) {
        rig.answer(Fault::redirect(rig.url("status"), row.status));
        const auto what = row.method + " with " + std::to_string(row.status);
        trial.expectEqual(what, rig.summaryOf(*session, {.url = rig.url(), .method = row.method, .body = "body"}),
                          "200 quick");
        const auto last = rig.server.requests().back();
        trial.expectEqual("the method after " + what, last.method, row.followedBy);
        trial.expectEqual("the body after " + what, last.body, row.body);
    }
}

void endsRedirects(Trial& trial) {
    UrlRig rig{trial};
    const auto session = rig.session();
    const std::pair<std::string, std::string> rows[] = {
        {"http://localhost:" + std::to_string(rig.server.port()) + "/session/check/status", "unsupportedScheme"},
        {"https://[", "badAnswer"}};
    for (const auto& [target, kind] : rows) {
        rig.answer(Fault::redirect(target));
        trial.expectEqual("a redirect to " + target, rig.summaryOf(*session, {.url = rig.url()}), kind);
    }
    const auto before = rig.requests();
    rig.answer(Fault::redirect(rig.url()));
    trial.expectEqual("a redirect in a circle", rig.summaryOf(*session, {.url = rig.url()}), "tooManyRedirects");
    trial.expectEqual("requests of the circle", rig.requests() - before, 21U);
}

void keepsCookies(Trial& trial) {
    CookieServer server{trial};
    const auto services = trial.services(server.root());
    const auto session = required(services.urlSessions).make({});
    const auto seenBy = [&](platform::UrlSession& sender, const std::string& path) {
        const Outcomes outcomes;
        sender.dataTask({.url = server.url(path)}, outcomes.completion());
        trial.expectSoon("an answer for " + path, [&] { return outcomes.count() > 0; });
        const auto cookies = server.cookies();
        return cookies.empty() ? "no request" : cookies.back();
    };
    trial.expectEqual("cookies of the first request", seenBy(*session, "/first"), "none");
    trial.expectEqual("cookies of the second", seenBy(*session, "/first"), "first=42");
    trial.expectEqual("cookies in another session", seenBy(*services.urlSessions->make({}), "/first"), "none");

    const Outcomes late;
    session->dataTask({.url = server.url("/late")}, late.completion());
    const auto known = server.cookies().size();
    trial.expectSoon("the late request is sent",
                     [&] { return server.cookies().size() >= std::max<std::size_t>(known, 4); });
    session->forgetCookies();
    trial.expectEqual("cookies once they are forgotten", seenBy(*session, "/second"), "none");
    server.release();
    trial.expectSoon("the late answer", [&] { return late.count() > 0; });
    trial.expectEqual("cookies of later requests alone", seenBy(*session, "/second"), "second=42");
}

} // namespace

Checks urlRequestChecks() {
    const auto* const seam = "UrlSession";
    return {
        {seam, "sends the request as it is, with the session's headers", sendsTheRequest},
        {seam, "sends over https only, and nothing that is malformed", sendsHttpsOnly},
        {seam, "follows redirects with the method that they ask for", followsRedirects},
        {seam, "follows no redirect out of https, to nonsense or without end", endsRedirects},
        {seam, "keeps cookies to the session until it is told to forget them", keepsCookies},
    };
}

} // namespace kivo::check
