#include "Configuration/session/ApplicationInformation.hpp"
#include "impl/SessionAPI.hpp"
#include "support/HostFixture.hpp"

#include <map>
#include <set>

namespace kivo {
namespace {

class Facade : public test::HostFixture {};

TEST_F(Facade, LoadsTheSessionApiThatTheFirstTwoCharactersOfAVersionName) {
    constexpr const char* invalid = "Invalid sdk version!";

    const struct {
        const char* version;
        const char* reduced;
        /// The device code of the session API that is loaded.
        std::string deviceCode;
    } rows[] = {
        {"14", "14", "1401K"},
        {"150", "15", "1501K"},
        {"16", "16", "1601K"},
        {"170", "17", "1701K"},
        {"18x", "18", "1801K"},
        {"1.8.0", "1.", ""},
        {"1", invalid, ""},
        {"", invalid, ""},
        {"19", "19", ""},
        {"13", "13", ""},
        {"7", invalid, ""},
        {"\u00e918", "\u00e91", ""},
        // Characters as a person counts them.
        {"e\u0301x1", "e\u0301x", ""},
        {"e\u0301", invalid, ""},
        {"\U0001F1FA\U0001F1F31", "\U0001F1FA\U0001F1F31", ""},
        {"\xff\xfe", "\xff\xfe", ""},
    };

    for (const auto& [version, reduced, deviceCode] : rows) {
        SCOPED_TRACE(version);
        EXPECT_EQ(SdkVersions::getPreciseVersion(version), reduced);
        testing::internal::CaptureStdout();
        const auto session = std::static_pointer_cast<SessionAPI>(KivoSDK::load("K", version));
        EXPECT_EQ(KivoSDK::loadForProvider("K", version) == nullptr, deviceCode.empty());
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  deviceCode.empty() ? "Invalid sdk version!\nInvalid sdk version!\n" : "");
        EXPECT_EQ(session ? session->deviceCode() : "", deviceCode);
        EXPECT_EQ(KivoSDK::requestedSDKVersion(), version);
    }
    const auto first = KivoSDK::load("K", "183");
    EXPECT_EQ(KivoSDK::load("L", "18"), first);
    EXPECT_EQ(KivoSDK::load("M", "19"), nullptr);
    EXPECT_EQ(std::static_pointer_cast<SessionAPI>(first)->deviceCode(), "1801L");
}

TEST_F(Facade, TheWrapperHoldsOnToItsLastProvider) {
    ZorFrameworkWrapper wrapper;
    const auto parked = config();
    wrapper.setConfig(parked);
    const auto provider = wrapper.load("K", "17");
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(wrapper.apiProvider(), provider);
    EXPECT_EQ(provider->sdkTheme(), SessionAPI::shared(InterfaceVersion::v170)->sdkTheme());
    EXPECT_EQ(SessionAPI::shared(InterfaceVersion::v170)->deviceCode(), "1701K");
    EXPECT_EQ(wrapper.load("K", "1.7"), nullptr);
    EXPECT_EQ(wrapper.apiProvider(), nullptr);
    wrapper.setApiProvider(provider);
    EXPECT_EQ(wrapper.apiProvider(), provider);
    EXPECT_EQ(wrapper.config(), parked);
}

TEST_F(Facade, ProvidersLogAFailedJoin) {
    KivoSDK::setLogLevel(LogLevel::debug);
    testing::internal::CaptureStdout();
    answerTo([](const IdvCompletion& done) {
        KivoSDK::loadForProvider("K", "18")->join("no code", config(), [done](const auto&) { done({}); });
    });
    EXPECT_TRUE(testing::internal::GetCapturedStdout().contains(
        "join(forCode:config:response:) \u2013 Join failure: STATUS_INVALID_ACTIVATION_CODE, 1001, "
        "Activation code is not valid, STATUS_INVALID_ACTIVATION_CODE\n"));
}

// One call joins; the answer waits for the main queue, on which the captures end as well.
TEST_F(Facade, JoinsInOneCallAndAnswersOnTheMainQueue) {
    std::thread::id heardOn;
    std::thread::id endedOn;
    const auto witness = [&endedOn] {
        return std::shared_ptr<int>{new int{}, [&endedOn](const int* made) {
                                        delete made;
                                        endedOn = std::this_thread::get_id();
                                    }};
    };
    const auto page = service.joinPage();
    IdvOutcome heard = std::unexpected{ResponseCode::NO_RESPONSE};
    const auto join = [&](std::string version, std::string code, Deployment deployment) {
        heardOn = endedOn = {};
        auto session = KivoSDK::join({.key = "K",
                                      .version = std::move(version),
                                      .activationCode = std::move(code),
                                      .config = {.ENVIRONMENT = SDKEnv::TEST},
                                      .deployment = std::move(deployment)},
                                     [&, held = witness()](IdvOutcome outcome) {
                                         heard = std::move(outcome);
                                         heardOn = std::this_thread::get_id();
                                     });
        EXPECT_EQ(heardOn, std::thread::id{}) << "before the call has returned";
        mainLoop->runUntil([&] { return endedOn != std::thread::id{}; }, std::chrono::seconds{60});
        EXPECT_EQ(heardOn, std::this_thread::get_id());
        EXPECT_EQ(endedOn, std::this_thread::get_id());
        return session;
    };
    const auto session = join("", "123456", {.joinPages = {.TEST = page}});
    ASSERT_EQ(session, KivoSDK::load("K", "18"));
    EXPECT_TRUE(heard);
    EXPECT_FALSE(session->lastFailure());
    EXPECT_EQ(join("", "no code", {.joinPages = {.TEST = page}}), session);
    EXPECT_EQ(heard.error(), ResponseCode::STATUS_INVALID_ACTIVATION_CODE);
    EXPECT_EQ(session->lastFailure()->kind, FailureKind::refused);
    join("", "123456", {.joinPages = {.PROD = page}});
    EXPECT_EQ(session->lastFailure()->kind, FailureKind::address);
    EXPECT_EQ(session->lastFailure()->code, ResponseCode::INVALID_JOIN_SESSION);
    EXPECT_EQ(join("13", "123456", {.joinPages = {.TEST = page}}), nullptr);
    EXPECT_EQ(heard.error(), ResponseCode::INVALID_JOIN_SESSION);
}

TEST_F(Facade, ARequestGivenUpIsAnsweredOnceAndLetsItsCapturesGo) {
    const auto session = KivoSDK::load("K", "18");
    service.inject(simulator::Endpoint::join, simulator::Fault::delay(std::chrono::milliseconds{50}));
    std::vector<IdvOutcome> heard;
    auto held = std::make_shared<int>();
    const CancellableCompletion pending{[&heard, held](IdvOutcome outcome) { heard.push_back(std::move(outcome)); }};
    test::Collected<IdvOutcome> late;
    session->join("123456", config(), [pending = pending.completion(), late = late.completion()](const auto& outcome) {
        pending(outcome);
        late(outcome);
    });
    EXPECT_TRUE(pending.cancel());
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(pending.cancel());
    ASSERT_EQ(late.wait().size(), 1U);
    EXPECT_TRUE(late.wait()[0].outcome);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].error(), ResponseCode::CANCELLED_BY_USER);
}

TEST(RawValues, OnlyKnownIntegersMakeValues) {
    const auto expectRange = []<class Value>(Value first, Value last) {
        for (int raw = static_cast<int>(first) - 1; raw <= static_cast<int>(last) + 1; ++raw) {
            const bool isKnown = raw >= static_cast<int>(first) && raw <= static_cast<int>(last);
            EXPECT_EQ(fromRawValue<Value>(raw), isKnown ? std::optional{static_cast<Value>(raw)} : std::nullopt);
        }
    };
    expectRange(SDKEnv{0}, SDKEnv{3});
    expectRange(LogLevel{1}, LogLevel{5});
    expectRange(IdvEvents{0}, IdvEvents{8});
    expectRange(AcquisitionObject{0}, AcquisitionObject{7});
    expectRange(ObjCResultStatus{0}, ObjCResultStatus{1});
    EXPECT_EQ(SDKEnvHelper::environmentName(SDKEnv::PREPROD), "PREPROD");
    EXPECT_EQ(SDKEnvHelper::environmentName(static_cast<SDKEnv>(4)), "");
    EXPECT_EQ(IdvEventsHelper::eventName(static_cast<IdvEvents>(-1)), "");
    EXPECT_EQ(AcquisitionObjectHelper::acquisitionObjectName(AcquisitionObject::documentBackImage),
              "DOCUMENT_BACK_IMAGE");
}

TEST_F(Facade, CollectsTheApplicationInformationOnce) {
    device->machineName = "\xff";
    KivoSDK::setLogLevel(LogLevel::debug);
    testing::internal::CaptureStdout();
    const auto& information = Environment::applicationInformation();
    const auto printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(
        printed.starts_with("**** Could not find readid_certificates.plist file in bundle. \n Please import this "
                            "file from SDK using copy resources settings ****\n\u2753 \u2013 "));
    EXPECT_TRUE(printed.contains(" \u2013 Environment \u2013 appInfoDict [appVersion: 2.1., os: iOS 12.5, "));
    const std::map<std::string, std::string> values{information.begin(), information.end()};
    EXPECT_EQ(values.at("deviceModel"), "N/A");
    EXPECT_EQ(values.at("NetworkIpAddress"), "");
    EXPECT_EQ(values.at("expiryDateLeafCert"), "");
    device->machineName = "x86_64";
    EXPECT_EQ(Environment::applicationInformation(), information);
}

TEST(NetworkAddress, IsTheLastOneOfAReportedInterface) {
    using enum platform::AddressFamily;
    const std::set<std::string> reported{"en0", "en2", "en3", "en4", "pdp_ip0", "pdp_ip1", "pdp_ip2", "pdp_ip3"};
    std::vector<platform::InterfaceAddress> all{{"en0", ipv6, "2001:db8::1"}};
    for (const auto* name : {"en", "en0", "en00", "en1", "en2", "en3", "en4", "en5", "pdp_ip", "pdp_ip0", "pdp_ip1",
                             "pdp_ip2", "pdp_ip3", "pdp_ip4", "lo", "eth0", ""}) {
        all.push_back({name, other, "nowhere"});
        const auto before = Environment::networkIpAddress(all);
        all.push_back({name, ipv4, std::string{"at "} + name});
        EXPECT_EQ(Environment::networkIpAddress(all), reported.contains(name) ? all.back().numericHost : before);
        EXPECT_NE(before, "nowhere") << name;
    }
}

} // namespace
} // namespace kivo
