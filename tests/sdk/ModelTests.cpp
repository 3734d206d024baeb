#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/KivoSDK.hpp>

#include <gmock/gmock.h>

namespace kivo {
namespace {

TEST(ActivationResponse, KeepsWhatItCanReadAndNamesWhatItCannot) {
    KivoSDK::setLogLevel(LogLevel::debug);
    testing::internal::CaptureStdout();
    const auto session = ActivationResponse::decode(
        R"({"response-type":"data","response-code":null,"tid":7,"idp-config":{"retry-limit":3},)"
        R"("app-config":{"app-doclist":"true"},"idp-biodata":[],"unknown":{}})");
    const auto log = testing::internal::GetCapturedStdout();
    ASSERT_TRUE(session);
    EXPECT_EQ(session->responseType, "data");
    EXPECT_EQ(session->tId, "");
    EXPECT_TRUE(session->idpConfig.empty());
    EXPECT_TRUE(ActivationResponse::isDocumentListAvailable(&*session));
    for (const auto* property : {"responseCode", "tId", "idpConfig", "idpBiodata"}) {
        EXPECT_TRUE(log.contains(std::string{"init(from:) \u2013 Error mapping "} + property + " ")) << log;
    }
    EXPECT_FALSE(log.contains("appConfig"));
    EXPECT_FALSE(log.contains("idpFaceMap"));
}

TEST(AcquisitionConfig, DecodesOnlyWhatIsWhole) {
    const AcquisitionConfig config{SDKEnv::DEV, "1", "2", "3", "4", "5"};
    const auto encoded = config.encode();
    EXPECT_EQ(encoded, R"({"ENVIRONMENT":3,"KIVO_APP_DOCLIST":"1","KIVO_EXPIRE_GRACE":"2",)"
                       R"("KIVO_FACEMATCH_MIN":"3","KIVO_DOC_ISSUERS":"4","KIVO_IMAGES":"5"})");
    const auto decoded = AcquisitionConfig::decode(encoded);
    ASSERT_TRUE(decoded);
    EXPECT_EQ((*decoded)->getAsDictionary(), config.getAsDictionary());

    const std::pair<std::string_view, std::string_view> damage[] = {
        {"\"KIVO_IMAGES\"", "\"KIVO_OTHER\""}, {":\"5\"", ":5"},   {":3,", ":4,"},   {":3,", ":4294967299,"},
        {"\"ENVIRONMENT\"", "\"ENV\""},        {":3,", ":\"3\","}, {":3,", ":3.0,"}, {"{\"ENV", "[{\"ENV"},
    };
    for (const auto& [part, replacement] : damage) {
        auto broken = encoded;
        broken.replace(broken.find(part), part.size(), replacement);
        const auto result = AcquisitionConfig::decode(broken);
        EXPECT_TRUE(!result && !result.error().empty()) << broken;
    }
}

TEST(CertificateDates, CountWholeDays) {
    using namespace std::chrono;
    using namespace std::chrono_literals;
    const auto noon = sys_days{2026y / June / 1} + 12h;
    EXPECT_EQ(daysUntil(2026y / June / 4, noon), 2);
    EXPECT_EQ(daysUntil(2026y / May / 1, noon), -31);
    EXPECT_EQ(monthDayYear(certificateDatesOf(SDKEnv::PREPROD)->leaf), "11/09/2025");
    EXPECT_FALSE(certificateDatesOf(SDKEnv::DEV));

    auto& security = CommunicationSecurityManager::shared();
    security.setSdkEnvironment(SDKEnv::PROD);
    testing::internal::CaptureStdout();
    EXPECT_EQ(security.certificateExpiryDates(/*warn=*/true).leaf, "09/10/2025");
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("[*]{4}-[0-9]+[*]{4} Days left until PROD Server Leaf Certificate Expiration\n"))
        << "the intermediate has years left";
}

} // namespace
} // namespace kivo
