#include "support/HostFixture.hpp"

#include <gmock/gmock.h>

#include <future>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;

class ScanEndpoints : public test::HostFixture {
protected:
    ScanEndpoints() { join(*KivoSDK::load("KEY", "18")); }

    platform::UrlRequest request(const std::string& pathInSession, std::string body) const {
        auto page = service.joinPage();
        return {.url = page.substr(0, page.find('/', 8)) + "/session/" + pathInSession,
                .method = "POST",
                .headers = {{"Content-Type", "application/json"},
                            {"X-Device-Key", "simulated-device-key"},
                            {"User-Agent", "vendor"},
                            {"X-User-Agent", "vendor"}},
                .body = std::move(body)};
    }

    platform::UrlRequest faceScan(const std::string& scan = "c2Nhbg==") const {
        return request("s1/facemap/enrollment-3d",
                       R"({"faceScan":")" + scan +
                           R"(","auditTrailImage":"YWFh","lowQualityAuditTrailImage":"YWFh",)"
                           R"("externalDatabaseRefID":""})");
    }

    platform::UrlRequest idScan() const {
        return request("s1/idScan/idscan-only", R"({"idScan":"c2Nhbg==","idScanFrontImage":"YWFh"})");
    }

    std::string send(platform::UrlRequest request) {
        std::promise<std::string> answer;
        session_->dataTask(std::move(request), [&](const platform::UrlOutcome& outcome) {
            answer.set_value(outcome ? outcome->body.value_or("") : outcome.error().text);
        });
        return answer.get_future().get();
    }

    std::shared_ptr<platform::UrlSession> session_ = services.urlSessions->make({});
};

TEST_F(ScanEndpoints, TakeScansOfAnOpenSession) {
    EXPECT_THAT(send(faceScan()), HasSubstr(R"("scanResultBlob":"simulated-blob:accepted")"));
    EXPECT_THAT(send(idScan()), HasSubstr(R"("response-type":"pass")"));
    auto stranger = faceScan();
    stranger.url.replace(stranger.url.find("/s1/"), 4, "/s9/");
    EXPECT_THAT(send(stranger), HasSubstr("STATUS_INVALID_SESSION"));
    EXPECT_THAT(service.violations(), IsEmpty());
}

TEST_F(ScanEndpoints, AndTheOthersNoteWhatGoesAstray) {
    std::size_t noted = 0;
    for (const auto* path : {"s1/update/more", "s1/biodata/nonsense", "s1/join", "s1//update"}) {
        auto astray = request(path, R"({"kivo-action":"a","message":"m","tid":"T"})");
        astray.headers[0].second = "application/json; charset=UTF-8";
        send(astray);
        EXPECT_EQ(service.violations().size(), ++noted) << path;
    }
}

TEST_F(ScanEndpoints, AFaultMeetsAsManyCallsAsItIsToldTo) {
    service.inject(Endpoint::facemap, Fault::anotherScan(), Calls::first(0));
    EXPECT_THAT(send(faceScan()), HasSubstr("accepted"));
    for (const auto& once : {Calls::first(1), Calls::only(1)}) {
        service.inject(Endpoint::facemap, Fault::anotherScan(), once);
        EXPECT_THAT(send(faceScan()), HasSubstr("scan-again"));
        EXPECT_THAT(send(faceScan()), HasSubstr("accepted"));
    }
    service.inject(Endpoint::facemap, Fault::anotherScan());
    EXPECT_THAT(send(faceScan()), HasSubstr("scan-again"));
}

TEST_F(ScanEndpoints, RefuseWhatBreaksTheProtocol) {
    const auto header = [](std::size_t index, const char* value) {
        return [=](platform::UrlRequest& request) { request.headers[index].second = value; };
    };
    const auto body = [](const char* from, const char* to) {
        return [=](platform::UrlRequest& request) {
            request.body.replace(request.body.find(from), std::string_view{from}.size(), to);
        };
    };

    enum Kind { face, id, both };

    const struct {
        Kind kind;
        const char* violation;
        std::function<void(platform::UrlRequest&)> spoil;
    } rows[] = {
        {both, "the method", [](auto& request) { request.method = "PUT"; }},
        {both, "the path", [](auto& request) { request.url += "x"; }},
        {both, "the Content-Type", header(0, "application/json; charset=UTF-8")},
        {both, "the X-Device-Key", header(1, "another")},
        {both, "not JSON", body("{", "")},
        {both, "not Base64", body("c2Nhbg==", "c2Nhb")},
        {both, "not Base64", body("\"c2Nhbg==\"", "7")},
        {both, "unknown member \"x\"", body("{", R"({"x":"",)")},
        {face, "no User-Agent", header(2, "")},
        {face, "lacks \"auditTrailImage\"", body(R"("auditTrailImage":"YWFh",)", "")},
        {face, "lacks \"externalDatabaseRefID\"", body(R"(,"externalDatabaseRefID":"")", "")},
        {id, "the X-User-Agent", header(3, "another")},
    };

    for (const auto& [kind, violation, spoil] : rows) {
        for (const auto sent : {face, id}) {
            if (kind == sent || kind == both) {
                auto request = sent == face ? faceScan() : idScan();
                spoil(request);
                EXPECT_THAT(send(request), HasSubstr("STATUS_BAD_PROTOCOL")) << violation;
                EXPECT_THAT(service.violations().back(), HasSubstr(violation));
            }
        }
    }
}

} // namespace
} // namespace kivo::simulator
