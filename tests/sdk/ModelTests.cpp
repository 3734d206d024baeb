#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/base/Process.hpp"
#include "platform/bundle/FolderBundles.hpp"
#include "support/PropertyLists.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/Deployment.hpp>
#include <kivo/KivoSDK.hpp>
#include <kivo/ResponseCode.hpp>
#include <kivo/platform/Services.hpp>

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace kivo {
namespace {

// Hosts store the numbers, services send the names, and people read the texts.
TEST(ResponseCode, KeepsItsNumberNameAndTexts) {
    std::ostringstream all;
    for (const auto each : allResponseCodes()) {
        all << code(each) << ' ' << name(each) << ": " << message(each) << " (" << genericMessage(each) << ")\n";
        EXPECT_EQ(responseCode(code(each)), each);
        EXPECT_EQ(responseCodeNamed(name(each)), each);
    }
    std::ostringstream published;
    published << std::ifstream{KIVO_TEST_DATA "/response-codes.txt"}.rdbuf();
    EXPECT_EQ(all.str(), published.str());
    for (const auto unknown : {static_cast<ResponseCode>(999), static_cast<ResponseCode>(-1)}) {
        EXPECT_EQ(code(unknown), 0);
        EXPECT_EQ(name(unknown), "");
        EXPECT_EQ(message(unknown), "");
        EXPECT_EQ(genericMessage(unknown), "");
    }
    std::string cancellations;
    for (const auto each : allResponseCodes()) {
        cancellations += isCancellation(each) ? std::string{name(each)} + ' ' : "";
    }
    EXPECT_EQ(cancellations, "CANCELLED_BY_USER USER_CANCELLED BACK_NAVIGATION CANCELLED "
                             "USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT ");
    EXPECT_FALSE(isCancellation(static_cast<ResponseCode>(999)));
    EXPECT_FALSE(responseCode(0) || responseCode(1000) || responseCodeNamed("") || responseCodeNamed("no_chip"));
}

TEST(ActivationResponse, TakesTheLastOfMembersWithOneName) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {R"({"tid":"1","x":[{"tid":"2"}],"tid":"\u0033","idp-config":{"b":"1","a":"2","b":"\"3\u00E9"}})",
         R"(3 a=2 b="3é)"},
        {R"({"tid":"1","tid":2,"idp-config":{"a":"1"},"idp-config":{"b":"2"}})", " b=2"},
        {R"({"idp-config":{"a":1,"a":"2"}})", " a=2"},
        {R"({"idp-config":{"a":"1","b":"2","a":null}})", ""},
        {R"({"tid":"1","idp-config":["a"]})", "1"},
        {R"({"tid":"1"} x)", "refused"},
        {R"({"idp-config":{"a":1 "b":"2"}})", "refused"},
        {R"(["tid"])", "refused"},
    };
    for (const auto& [text, expected] : rows) {
        const auto session = ActivationResponse::decode(text);
        auto said = session ? session->tId : "refused";
        for (const auto& [key, setting] : session.value_or(ActivationResponse{}).idpConfig) {
            said += " " + key + "=" + setting;
        }
        EXPECT_EQ(said, expected) << text;
    }
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

TEST(BundledDeployment, KeepsItsDefaultsWhereTheFileNamesNothingUsable) {
    const std::pair<const char*, const char*> rows[] = {
        {"<key>FaceTecProduction</key><true/><key>FaceTecProductionKey</key><string>vendor-key</string>",
         "production vendor-key"},
        {"", "development"},
        {"<key>FaceTecProduction</key><string>yes</string><key>FaceTecProductionKey</key><true/>", "development"},
        {"<key>RequiresPins</key><false/>", "development"},
        {"<key>RequiresPins</key><string>no</string>", "development pinned"},
        {"<key>JoinPages</key><dict><key>TEST</key><string>https://page</string><key>DEV</key><true/></dict>",
         "development https://page"},
        {"<key>JoinPages</key><true/>", "development"},
        {nullptr, "development pinned"},
    };
    const test::TemporaryFolder folder;
    folder.write(
        "Sdk.bundle/Info.plist",
        test::propertyList("<dict><key>CFBundleIdentifier</key><string>com.test.ZORFramework</string></dict>"));
    for (const auto& [members, seen] : rows) {
        folder.write("Sdk.bundle/Deployment.plist",
                     members ? test::propertyList("<dict>" + std::string{members} + "</dict>") : "broken");
        platform::Process::beginAnew();
        platform::Services services;
        services.bundles = platform::makeFolderBundles(folder.path() / "Host.bundle", folder.path() / "Sdk.bundle",
                                                       platform::services().diagnostics);
        platform::install(services);
        const auto deployment = Deployment::current();
        std::string all = deployment.faceTecProduction ? "production" : "development";
        for (const auto& part : {deployment.faceTecProductionKey, std::string{deployment.requiresPins ? "pinned" : ""},
                                 deployment.joinPage(SDKEnv::TEST), deployment.joinPage(SDKEnv::DEV)}) {
            all += part.empty() ? "" : ' ' + part;
        }
        EXPECT_EQ(all, seen);
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
    EXPECT_EQ(security.certificateExpiryDates(/*warn=*/true, noon).leaf, "09/10/2025");
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::StrEq("****-264**** Days left until PROD Server Leaf Certificate Expiration\n"))
        << "the intermediate has years left";
}

} // namespace
} // namespace kivo
