#include "Configuration/environment/SdkBundle.hpp"
#include "support/HostFixture.hpp"

#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

/// What a host and the vendor hear of a face scan's upload over the real transport.
namespace kivo {
namespace {

using namespace std::chrono_literals;
using simulator::Endpoint;
using simulator::Fault;
using testing::IsEmpty;

class ScanUploads : public test::HostFixture {
protected:
    explicit ScanUploads(const simulator::IdentityServiceConfiguration& configuration = defaultConfiguration())
        : HostFixture{configuration} {
        platform::Services more;
        more.faceTec = vendor;
        platform::install(more);
        std::filesystem::copy(*sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                              folder.path() / "Host.bundle");
        window->setRootViewController(std::make_shared<platform::NavigationController>(host));
        theme->faceScanUploadMessage = "Still sending";
        start("18");
    }

    void start(const char* version) {
        session = KivoSDK::load("KEY", version);
        session->setTheme(theme);
        session->setContext(host);
        EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    }

    /// Runs the main loop, and its clock along, until `holds`.
    bool passes(const std::function<bool()>& holds) {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (!mainLoop->runUntil(holds, 1ms)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            clock->advance(10ms);
        }
        return true;
    }

    void scanFace() {
        answers.clear();
        session->acquire(AcquisitionObject::facemapScan, nullptr,
                         [this](const IdvOutcome& outcome) { answers.push_back(outcome); });
        const auto tapped = person.tap("nextButton");
        EXPECT_TRUE(tapped) << tapped.error();
    }

    /// How the acquisition ended, in the one word for it.
    std::string answer() {
        if (!passes([this] { return !answers.empty(); }) || answers.size() != 1) {
            return std::to_string(answers.size()) + " answers";
        }
        return std::string{answers[0] ? IdvEventsHelper::eventName((*answers[0])->responseType())
                                      : name(answers[0].error())};
    }

    std::shared_ptr<simulator::FaceTec> vendor = std::make_shared<simulator::FaceTec>();
    std::shared_ptr<ThemeCustomization> theme = std::make_shared<ThemeCustomization>();
    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    simulator::Person person{window, mainLoop, clock};
    std::shared_ptr<KivoAPI> session;
    std::vector<IdvOutcome> answers;
};

TEST_F(ScanUploads, ShowsHowASlowUploadGoesOn) {
    constexpr auto size = std::size_t{8} * 1024 * 1024;
    vendor->faceScan.scanBytes = size;
    service.inject(Endpoint::facemap, Fault::slowReader(size / 2));
    scanFace();
    const auto record = [this] { return vendor->sessions().back(); };
    ASSERT_TRUE(mainLoop->runUntil([&] { return !record().uploadProgress.empty(); }, 20s));
    clock->advance(5999ms);
    mainLoop->drain();
    EXPECT_THAT(record().uploadMessages, IsEmpty());
    clock->advance(1ms);
    mainLoop->drain();
    ASSERT_EQ(record().uploadMessages.size(), 1U);
    EXPECT_EQ(record().uploadMessages[0].text, "Still sending");
    EXPECT_EQ(answer(), "FACE_SCAN");
    const auto progress = record().uploadProgress;
    EXPECT_GE(progress.size(), 2U);
    EXPECT_TRUE(std::ranges::is_sorted(progress));
    EXPECT_GT(progress.front(), 0);
    EXPECT_LT(progress.front(), 1);
    EXPECT_EQ(progress.back(), 1);
    EXPECT_THAT(vendor->violations(), IsEmpty());
}

TEST_F(ScanUploads, EndsInTheMiddleOfAnUpload) {
    service.inject(Endpoint::facemap, Fault::drop());
    vendor->faceScan.statusWhileWaiting = simulator::faceScanStatus::contextSwitch;
    scanFace();
    EXPECT_EQ(answer(), "CONTEXT_SWITCH");
    EXPECT_TRUE(person.sees("Start the scan")) << person.screenInWords();
    EXPECT_THAT(vendor->violations(), IsEmpty());
}

class PinnedScanUploads : public ScanUploads {
protected:
    PinnedScanUploads()
        : ScanUploads{[] {
            auto configuration = defaultConfiguration();
            configuration.hostPerEndpoint = true;
            return configuration;
        }()} {
        folder.write("Host.bundle/readid_certificates.plist",
                     R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array><string>)" +
                         service.pins().leaf + "</string></array></plist>");
    }
};

TEST_F(PinnedScanUploads, SendsNoScanToAnyOther) {
    service.inject(Endpoint::facemap, Fault::certificate(simulator::CertificateFlaw::selfSigned));
    scanFace();
    EXPECT_EQ(answer(), "UNSECURE_SERVER_PINNING_FAILED");
    EXPECT_THAT(requestsTo(Endpoint::facemap), IsEmpty());
    ASSERT_TRUE(passes([this] { return vendor->sessions().back().isDone; }));
    service.clearFaults();
    EXPECT_TRUE(passes([this] { return person.sees("Start the scan"); }));
    answers.clear();
    EXPECT_TRUE(person.tap("nextButton"));
    EXPECT_EQ(answer(), "FACE_SCAN");
}

} // namespace
} // namespace kivo
