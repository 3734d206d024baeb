#include "Configuration/environment/SdkBundle.hpp"
#include "support/Answers.hpp"
#include "support/HostFixture.hpp"

#include <kivo/simulator/Person.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using platform::readid::ReadIDError;
using testing::ElementsAre;
using testing::IsEmpty;

/// A host that acquires documents with the simulated library, over real TLS.
class ReadIDTest : public test::HostFixture {
protected:
    ReadIDTest()
        : HostFixture{hostPerEndpoint()} {
        services.readID = vendor;
        platform::install(services);
        const auto layout = sdkBundle()->pathForResource("ZORFramework", "storyboard");
        std::filesystem::copy(*layout, folder.path() / "Host.bundle");
        window->setRootViewController(navigation);
    }

    static IdentityServiceConfiguration hostPerEndpoint() {
        IdentityServiceConfiguration configuration;
        configuration.hostPerEndpoint = true;
        return configuration;
    }

    /// Joins and shows the document screen to a person.
    void acquire(const char* version = "18") {
        session = KivoSDK::load("KEY", version);
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        session->setContext(start);
        session->acquire(AcquisitionObject::nfcScan, nullptr, [this](const IdvOutcome& outcome) {
            heard.emplace_back(outcome ? IdvEventsHelper::eventName((*outcome)->responseType())
                                       : name(outcome.error()));
        });
    }

    /// Waits while the network is real and the screens' delays pass by hand.
    bool becomes(const std::function<bool()>& condition) {
        return test::eventually([&] {
            clock->advance(10ms);
            mainLoop->drain();
            return condition();
        });
    }

    /// Whether the choice is on top again, with nothing over it.
    bool choiceIsBack() { return person.sees("Choose your document") && window->visibleViewController() != start; }

    void leave() {
        navigation->popToViewController(start, false);
        becomes([&] { return navigation->viewControllers().size() == 1; });
        mainLoop->drain();
        heard.clear();
    }

    static void tap(Person& person, const char* name) {
        const auto done = person.tap(name);
        EXPECT_TRUE(done) << done.error();
    }

    std::shared_ptr<ReadID> vendor = std::make_shared<ReadID>();
    std::shared_ptr<platform::ViewController> start = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation =
        std::make_shared<platform::NavigationController>(start);
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    Person person{window, mainLoop, clock};
    std::shared_ptr<KivoAPI> session;
    std::vector<std::string> heard;
};

TEST_F(ReadIDTest, ReadsADocumentThroughTheProxyAndTheNoticeNamesItsSession) {
    for (const auto& reading : {Reading::pageAndChip(), Reading::chip()}) {
        vendor->next(reading);
        acquire();
        tap(person, "idCardOptionContainerView");
        ASSERT_TRUE(becomes([&] { return !heard.empty(); }));
        EXPECT_THAT(heard, ElementsAre("DOCUMENT_SCAN"));
        EXPECT_TRUE(vendor->sessions().back().isFinished);
        leave();
    }
    ASSERT_EQ(requestsTo(Endpoint::biodata).size(), 2U);
    EXPECT_THAT(requestsTo(Endpoint::biodata)[0].body, testing::Not(testing::HasSubstr("ERIKSSON")));
    EXPECT_THAT(requestsTo(Endpoint::upload)[1].body, testing::HasSubstr(vendor->sessions()[1].id));
    EXPECT_THAT(service.violations(), IsEmpty());
}

TEST_F(ReadIDTest, EndsAsTheServersEnd) {
    struct Row {
        const char* what;
        Endpoint endpoint;
        Fault fault;
        std::string heard;
        bool isSent;
    };

    const Row rows[] = {
        {"proxy: unreachable", Endpoint::biodata, Fault::reset(), "CONNECTION_ERROR", false},
        {"proxy: key refused", Endpoint::biodata, Fault::status(401), "AUTHORISATION_ERROR", false},
        {"proxy: gone", Endpoint::biodata, Fault::status(410), "SESSION_EXPIRED", false},
        {"proxy: busy", Endpoint::biodata, Fault::status(429), "TOO_MANY_REQUESTS", false},
        {"proxy: broken", Endpoint::biodata, Fault::status(500), "SERVER_SESSION_ERROR", false},
        {"proxy: nonsense", Endpoint::biodata, Fault::answer("[]"), "SERVER_SESSION_ERROR", false},
        {"proxy: false certificate", Endpoint::biodata, Fault::certificate(CertificateFlaw::selfSigned), "SSL_ERROR",
         false},
        {"notice: unreachable", Endpoint::upload, Fault::reset(), "SERVER_ERROR", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        acquire();
        service.inject(row.endpoint, row.fault);
        tap(person, "passportOptionContainerView");
        ASSERT_TRUE(becomes([&] { return !heard.empty(); }));
        EXPECT_THAT(heard, ElementsAre(row.heard));
        EXPECT_EQ(requestsTo(Endpoint::upload).empty(), !row.isSent);
        service.clearFaults();
        leave();
    }
    EXPECT_THAT(service.violations(), IsEmpty());
}

TEST_F(ReadIDTest, LetsAPersonChooseHowItEnds) {
    const std::pair<const char*, const char*> endings[] = {
        {"userCancelled", ""},
        {"backNavigation", ""},
        {"readPage", ""},
        {"noChip", "NO_CHIP"},
        {"nfcError", "NFC_ERROR"},
        {"cameraPermissionDenied", "CAMERA_PERMISSION_DENIED"},
        {"unknownSuccess", "UNKNOWN_ERROR"},
        {"readPageAndChip", "DOCUMENT_SCAN"},
    };
    acquire();
    for (const auto& [ending, outcome] : endings) {
        SCOPED_TRACE(ending);
        vendor->next(Reading::byPerson());
        tap(person, "passportOptionContainerView");
        ASSERT_TRUE(person.sees("Choose how the reading goes"));
        tap(person, ending);
        ASSERT_TRUE(becomes([&] { return std::string_view{outcome}.empty() ? choiceIsBack() : !heard.empty(); }));
        EXPECT_EQ(heard.empty() ? "" : heard.back(), outcome);
        heard.clear();
        // A person who left the reading only comes back to the choice; the session API keeps that from the host.
        EXPECT_NE(window->visibleViewController(), start);
    }
}

TEST_F(ReadIDTest, EndsWhenItsScreenIsTakenAway) {
    acquire("14");
    vendor->next(Reading::byPerson());
    tap(person, "passportOptionContainerView");
    ASSERT_TRUE(person.sees("Choose how the reading goes"));
    window->visibleViewController()->dismiss(false);
    ASSERT_TRUE(becomes([&] { return !heard.empty(); }));
    EXPECT_THAT(heard, ElementsAre("USER_CANCELLED"));
    EXPECT_TRUE(choiceIsBack());
}

TEST_F(ReadIDTest, BeginsOneReadingAtATimeAndOnlyWithAnHttpsProxy) {
    const auto flow = std::make_shared<platform::readid::NFCWithAccessControlFlow>();
    const auto identify = [&] {
        return vendor->identify(start, platform::ModalPresentationStyle::fullScreen, flow, [](const auto&) {});
    };
    flow->baseUrl = "http://proxy";
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::invalidConfiguration);
    flow->baseUrl = "https://localhost:1";
    vendor->next(Reading::refusal({.kind = ReadIDError::Kind::nfcNotSupported}));
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::nfcNotSupported);
    EXPECT_TRUE(identify());
    EXPECT_EQ(identify().error().kind, ReadIDError::Kind::other);
    EXPECT_EQ(vendor->flows().size(), 2U);
}

TEST_F(ReadIDTest, TheServiceFindsOutWhatWasSentWrong) {
    acquire();
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
                ElementsAre(testing::HasSubstr("access key"), testing::HasSubstr("\"sealed\""),
                            testing::HasSubstr("not encrypted"), testing::HasSubstr("\"opaqueId\""),
                            testing::HasSubstr("has not given out")));
}

TEST_F(ReadIDTest, SendsToPinnedServersOnlyWhereTheHostListsPins) {
    acquire();
    const auto write = [&](const std::string& pin) {
        std::ofstream{folder.path() / "Host.bundle" / "readid_certificates.plist"}
            << "<plist version=\"1.0\"><array><string>" << pin << "</string></array></plist>";
    };
    write("AAAA");
    tap(person, "passportOptionContainerView");
    ASSERT_TRUE(becomes([&] { return !heard.empty(); }));
    EXPECT_THAT(heard, ElementsAre("SSL_ERROR"));
    EXPECT_THAT(requestsTo(Endpoint::biodata), IsEmpty());
    ASSERT_TRUE(becomes([&] { return choiceIsBack(); }));
    write(service.pins().leaf);
    tap(person, "passportOptionContainerView");
    ASSERT_TRUE(becomes([&] { return heard.size() == 2; }));
    EXPECT_EQ(heard.back(), "DOCUMENT_SCAN");
}

} // namespace
} // namespace kivo::simulator
