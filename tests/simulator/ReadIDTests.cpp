#include "support/AcquisitionRoad.hpp"
#include "support/Answers.hpp"

#include <gmock/gmock.h>

namespace kivo::simulator {
namespace {

using enum AcquisitionObject;
using platform::readid::ReadIDError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Readings of documents, on the SDK's own screen.
class SimulatedReadID : public test::AcquisitionRoad {
protected:
    /// Whether the choice is on top again, with nothing over it.
    bool choiceIsBack() { return person.sees("Choose your document") && window->visibleViewController() != start; }
};

TEST_F(SimulatedReadID, ReadsADocumentThroughTheProxyAndTheNoticeNamesItsSession) {
    for (const auto& reading : {Reading::pageAndChip(), Reading::chip()}) {
        reader->next(reading);
        acquire(nfcScan);
        tap("idCardOptionContainerView");
        EXPECT_EQ(answer(), "DOCUMENT_SCAN");
        EXPECT_TRUE(reader->sessions().back().isFinished);
    }
    ASSERT_EQ(requestsTo(Endpoint::biodata).size(), 2U);
    EXPECT_THAT(requestsTo(Endpoint::biodata)[0].body, testing::Not(HasSubstr("ERIKSSON")));
    EXPECT_THAT(requestsTo(Endpoint::upload)[1].body, HasSubstr(reader->sessions()[1].id));
    EXPECT_THAT(service.violations(), IsEmpty());
}

TEST_F(SimulatedReadID, EndsAsTheServersEnd) {
    using enum Endpoint;

    const struct {
        const char* what;
        Endpoint endpoint;
        Fault fault;
        const char* heard;
    } rows[] = {
        {"proxy: unreachable", biodata, Fault::reset(), "CONNECTION_ERROR"},
        {"proxy: key refused", biodata, Fault::status(401), "AUTHORISATION_ERROR"},
        {"proxy: gone", biodata, Fault::status(410), "SESSION_EXPIRED"},
        {"proxy: busy", biodata, Fault::status(429), "TOO_MANY_REQUESTS"},
        {"proxy: broken", biodata, Fault::status(500), "SERVER_SESSION_ERROR"},
        {"proxy: nonsense", biodata, Fault::answer("[]"), "SERVER_SESSION_ERROR"},
        {"proxy: false certificate", biodata, Fault::certificate(CertificateFlaw::selfSigned), "SSL_ERROR"},
        {"notice: unreachable", upload, Fault::reset(), "SERVER_ERROR"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        acquire(nfcScan);
        service.inject(row.endpoint, row.fault);
        tap("passportOptionContainerView");
        EXPECT_EQ(answer(), row.heard);
        EXPECT_EQ(requestsTo(upload).empty(), row.endpoint != upload);
        service.clearFaults();
    }
    EXPECT_THAT(service.violations(), IsEmpty());
}

TEST_F(SimulatedReadID, LetsAPersonChooseHowAReadingEnds) {
    const std::pair<const char*, std::string> endings[] = {
        {"userCancelled", ""},
        {"backNavigation", ""},
        {"readPage", ""},
        {"noChip", "NO_CHIP"},
        {"nfcError", "NFC_ERROR"},
        {"cameraPermissionDenied", "CAMERA_PERMISSION_DENIED"},
        {"unknownSuccess", "UNKNOWN_ERROR"},
        {"readPageAndChip", "DOCUMENT_SCAN"},
    };
    const auto begin = [this] {
        reader->next(Reading::byPerson());
        tap("passportOptionContainerView");
        EXPECT_TRUE(person.sees("Choose how the reading goes"));
    };
    acquire(nfcScan);
    for (const auto& [ending, outcome] : endings) {
        SCOPED_TRACE(ending);
        begin();
        tap(ending);
        // A person who left the reading only comes back to the choice; the session API keeps that from the host.
        EXPECT_TRUE(becomes([&] { return outcome.empty() ? choiceIsBack() : !heard.empty(); }));
        EXPECT_EQ(std::exchange(heard, ""), outcome);
        EXPECT_NE(window->visibleViewController(), start);
    }
    acquire(nfcScan, "14");
    begin();
    window->visibleViewController()->dismiss(false);
    EXPECT_EQ(answer(), "USER_CANCELLED");
    EXPECT_TRUE(choiceIsBack());
}

TEST_F(SimulatedReadID, BeginsOneReadingAtATimeAndOnlyWithAnHttpsProxy) {
    const auto flow = std::make_shared<platform::readid::NFCWithAccessControlFlow>();
    const auto identify = [&] {
        return reader->identify(start, platform::ModalPresentationStyle::fullScreen, flow, [](const auto&) {});
    };
    flow->baseUrl = "http://proxy";
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::invalidConfiguration);
    flow->baseUrl = "https://localhost:1";
    reader->next(Reading::refusal({.kind = ReadIDError::Kind::nfcNotSupported}));
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::nfcNotSupported);
    EXPECT_TRUE(identify());
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::other);
    EXPECT_EQ(reader->flows().size(), 2U);
}

TEST_F(SimulatedReadID, TheServiceFindsOutWhatWasSentWrong) {
    acquire(nfcScan);
    const auto urlSession = services.urlSessions->make({});
    const auto send = [&](const std::string& endpoint, const std::string& key, const std::string& body) {
        const auto base = service.joinPage().substr(0, service.joinPage().find("/enrol"));
        return test::summary(test::exchange(
            *urlSession, {.url = base + "/session/s1/" + endpoint,
                          .method = "POST",
                          .headers = {{"Content-Type", "application/json; charset=UTF-8"}, {"X-Access-Key", key}},
                          .body = body}));
    };
    EXPECT_THAT(send("biodata/readings", "wrong", R"({"sealed":""})"), testing::StartsWith("401"));
    send("biodata/readings", "simulated-access-key", R"({"plain":"P<UTO"})");
    send("biodata/readings", "simulated-access-key", R"({"sealed":"AAAA"})");
    send("upload", "", R"({"opaqueId":"T2","sessionId":"reading-s1-1"})");
    send("upload", "", R"({"opaqueId":"T1","sessionId":"reading-s1-1"})");
    EXPECT_THAT(service.violations(),
                ElementsAre(HasSubstr("access key"), HasSubstr("\"sealed\""), HasSubstr("not encrypted"),
                            HasSubstr("\"opaqueId\""), HasSubstr("has not given out")));
}

TEST_F(SimulatedReadID, SendsToPinnedServersOnlyWhereTheHostListsPins) {
    acquire(nfcScan);
    pin("AAAA");
    tap("passportOptionContainerView");
    EXPECT_EQ(answer(), "SSL_ERROR");
    EXPECT_THAT(requestsTo(Endpoint::biodata), IsEmpty());
    ASSERT_TRUE(becomes([this] { return choiceIsBack(); }));
    pin(service.pins().leaf);
    tap("passportOptionContainerView");
    EXPECT_EQ(answer(), "DOCUMENT_SCAN");
}

} // namespace
} // namespace kivo::simulator
