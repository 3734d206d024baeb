#include "Configuration/session/ApplicationInformation.hpp"
#include "impl/SessionAPI.hpp"
#include "support/HostFixture.hpp"

namespace kivo {
namespace {

class Facade : public test::HostFixture {};

TEST_F(Facade, LoadsTheOneSessionApiOfTheVersion) {
    const auto first = KivoSDK::load("K", "183");
    const auto second = KivoSDK::load("L", "18x");
    EXPECT_EQ(first, second);
    EXPECT_EQ(SessionAPI::shared(InterfaceVersion::v180)->deviceCode(), "1801L");
    EXPECT_EQ(KivoSDK::requestedSDKVersion(), "18x");
    const std::pair<const char*, const char*> prefixes[] = {
        {"14", "1401"}, {"150", "1501"}, {"16", "1601"}, {"170", "1701"}, {"18", "1801"}};
    for (const auto& [version, prefix] : prefixes) {
        const auto session = KivoSDK::load("", version);
        EXPECT_EQ(std::static_pointer_cast<SessionAPI>(session)->deviceCode(), prefix);
    }
}

TEST_F(Facade, RejectsOtherVersionsAndSaysSo) {
    KivoSDK::load("K", "18");
    for (const auto* version : {"1.8.0", "1", "", "19", "13", "\u00e918", "1"}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(KivoSDK::load("X", version), nullptr) << version;
        EXPECT_EQ(KivoSDK::loadForProvider("X", version), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Invalid sdk version!\nInvalid sdk version!\n");
        EXPECT_EQ(KivoSDK::requestedSDKVersion(), version);
    }
    EXPECT_EQ(SessionAPI::shared(InterfaceVersion::v180)->deviceCode(), "1801K");
}

TEST_F(Facade, ReducesAVersionToTwoCharactersAsAPersonCountsThem) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"170", "17"},
        {"7", "Invalid sdk version!"},
        {"abc", "ab"},
        {"1", "Invalid sdk version!"},
        {"e\u0301x1", "e\u0301x"},
        {"e\u0301", "Invalid sdk version!"},
        {"\U0001F1FA\U0001F1F31", "\U0001F1FA\U0001F1F31"},
        {"\xff\xfe", "\xff\xfe"},
    };
    for (const auto& [version, reduced] : rows) {
        EXPECT_EQ(SdkVersions::getPreciseVersion(version), reduced) << version;
    }
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

TEST_F(Facade, ProvidersConvertOutcomes) {
    KivoSDK::setLogLevel(LogLevel::debug);
    const auto provider = KivoSDK::loadForProvider("K", "18");
    const auto outcome = [&](const std::function<void(ObjCCompletion)>& call) {
        std::shared_ptr<ObjCResult> received;
        answerTo([&](IdvCompletion done) {
            call([&received, done](std::shared_ptr<ObjCResult> result) {
                received = std::move(result);
                done(std::unexpected{ResponseCode::NO_RESPONSE});
            });
        });
        return received;
    };
    const auto failed = outcome([&](auto done) { provider->status(done); });
    EXPECT_EQ(failed->status(), ObjCResultStatus::failure);
    EXPECT_EQ(failed->success(), nullptr);
    EXPECT_EQ(failed->error()->errorName(), "INVALID_STATUS_SESSION");
    EXPECT_EQ(failed->error()->code(), 1119);
    EXPECT_EQ(failed->error()->message(), "Invalid status session response");
    EXPECT_EQ(failed->error()->genericMessage(), "Processing error");
    testing::internal::CaptureStdout();
    outcome([&](auto done) { provider->join("no code", config(), done); });
    EXPECT_TRUE(testing::internal::GetCapturedStdout().contains(
        "join(forCode:config:response:) \u2013 Join failure: STATUS_INVALID_ACTIVATION_CODE, 1001, "
        "Activation code is not valid, STATUS_INVALID_ACTIVATION_CODE\n"));
    const auto joined = outcome([&](auto done) { provider->join("123456", config(), done); });
    EXPECT_EQ(joined->status(), ObjCResultStatus::success);
    EXPECT_EQ(joined->error(), nullptr);
    EXPECT_EQ(joined->success()->responseType(), IdvEvents::JOIN_SESSION);
}

TEST_F(Facade, OnlyKnownIntegersMakeValues) {
    EXPECT_EQ(fromRawValue<SDKEnv>(1), SDKEnv::PREPROD);
    EXPECT_EQ(fromRawValue<SDKEnv>(4), std::nullopt);
    EXPECT_EQ(fromRawValue<LogLevel>(0), std::nullopt);
    EXPECT_EQ(fromRawValue<LogLevel>(6), std::nullopt);
    EXPECT_EQ(fromRawValue<IdvEvents>(8), IdvEvents::OCR_SCAN);
    EXPECT_EQ(fromRawValue<IdvEvents>(9), std::nullopt);
    EXPECT_EQ(fromRawValue<AcquisitionObject>(-1), std::nullopt);
    EXPECT_EQ(fromRawValue<ObjCResultStatus>(2), std::nullopt);
    EXPECT_EQ(SDKEnvHelper::environmentName(SDKEnv::PREPROD), "PREPROD");
    EXPECT_EQ(SDKEnvHelper::environmentName(static_cast<SDKEnv>(4)), "");
    EXPECT_EQ(IdvEventsHelper::eventName(IdvEvents::UPDATE_SESSION), "UPDATE_SESSION");
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
    const auto value = [&](std::string_view wanted) {
        for (const auto& [key, text] : information) {
            if (key == wanted) {
                return text;
            }
        }
        return std::string{"missing"};
    };
    EXPECT_EQ(value("deviceModel"), "N/A");
    EXPECT_EQ(value("NetworkIpAddress"), "");
    EXPECT_EQ(value("expiryDateLeafCert"), "");
    device->machineName = "x86_64";
    EXPECT_EQ(&Environment::applicationInformation(), &information);
    EXPECT_EQ(value("deviceModel"), "N/A");
}

TEST(NetworkAddress, IsTheLastOneOfAReportedInterface) {
    using enum platform::AddressFamily;
    const auto addressOn = [](const char* interface, platform::AddressFamily family = ipv4) {
        return Environment::networkIpAddress(std::vector<platform::InterfaceAddress>{{interface, family, "192.0.2.7"}});
    };
    for (const auto* reported : {"en0", "en2", "en3", "en4", "pdp_ip0", "pdp_ip1", "pdp_ip2", "pdp_ip3"}) {
        EXPECT_EQ(addressOn(reported), "192.0.2.7") << reported;
        EXPECT_EQ(addressOn(reported, other), "") << reported;
    }
    for (const auto* ignored : {"en1", "en5", "en", "en00", "pdp_ip4", "pdp_ip", "lo", "eth0", ""}) {
        EXPECT_EQ(addressOn(ignored), "") << ignored;
    }
    const std::vector<platform::InterfaceAddress> all{
        {"pdp_ip0", ipv4, "192.0.2.1"}, {"en0", ipv6, "2001:db8::1"}, {"en1", ipv4, "192.0.2.2"}};
    EXPECT_EQ(Environment::networkIpAddress(all), "2001:db8::1");
}

} // namespace
} // namespace kivo
