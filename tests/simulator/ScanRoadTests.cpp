#include "Configuration/environment/SdkBundle.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "support/HostFixture.hpp"

#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/Person.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <gmock/gmock.h>

#include <fstream>

namespace kivo::simulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A host that scans a face or a card with everything in place but the vendor's library, which is simulated.
class ScanRoad : public test::HostFixture {
protected:
    ScanRoad() {
        std::filesystem::copy(*sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                              folder.path() / "Host.bundle");
        services.mainQueue = platform::RunLoop::main();
        services.faceTec = vendor_;
        platform::install(services);
        window_->setRootViewController(navigation_);
        join(*session_);
        session_->setContext(start_);
        session_->sdkTheme()->faceScanSuccessMessageText = "Welcome to Utopia Bank";
    }

    /// From the host's start screen, as a host comes back to it between two acquisitions.
    void acquire(AcquisitionObject object) {
        navigation_->popToViewController(start_, true);
        heard_.clear();
        session_->acquire(object, nullptr, [this](const IdvOutcome& outcome) {
            heard_.emplace_back(outcome ? IdvEventsHelper::eventName((*outcome)->responseType())
                                        : name(outcome.error()));
        });
    }

    /// Starts a face scan on the SDK's own screen.
    void beginFaceScan() {
        acquire(AcquisitionObject::facemapScan);
        EXPECT_TRUE(person_.tap("nextButton"));
    }

    std::string report() {
        const auto outcome = person_.waitFor([this] { return !heard_.empty(); });
        return outcome ? heard_.back() : outcome.error();
    }

    void tapWhenSeen(const char* button) {
        EXPECT_TRUE(person_.waitFor([&] { return person_.screenInWords().contains(button); }));
        EXPECT_TRUE(person_.tap(button));
    }

    std::shared_ptr<FaceTec> vendor_ = std::make_shared<FaceTec>();
    std::shared_ptr<platform::ViewController> start_ = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation_ =
        std::make_shared<platform::NavigationController>(start_);
    std::shared_ptr<platform::Window> window_ = std::make_shared<platform::Window>();
    Person person_{window_};
    std::shared_ptr<KivoAPI> session_ = KivoSDK::load("KEY", "18");
    std::vector<std::string> heard_;
};

TEST_F(ScanRoad, GoesThroughTheVendorAndTheService) {
    vendor_->faceScan.scanBytes = std::size_t{10} * 1024 * 1024;
    service.inject(Endpoint::facemap, Fault::anotherScan(), Calls::only(1));
    beginFaceScan();
    EXPECT_EQ(report(), "FACE_SCAN");
    EXPECT_EQ(vendor_->successMessage(), "Welcome to Utopia Bank");
    EXPECT_THAT(vendor_->sessions().back().blobsTaken, ElementsAre(false, true));
    EXPECT_EQ(vendor_->sessions().back().uploadProgress.back(), 1.0F);
    EXPECT_EQ(requestsTo(Endpoint::facemap).size(), 2U);

    vendor_->idScan.sides = ScanScript::Sides::frontThenBack;
    acquire(AcquisitionObject::ocrScan);
    EXPECT_EQ(report(), "OCR_SCAN");
    EXPECT_EQ(requestsTo(Endpoint::idScan).size(), 2U);
    EXPECT_THAT(service.violations(), IsEmpty());
    EXPECT_THAT(vendor_->violations(), IsEmpty());
}

TEST_F(ScanRoad, LetsAPersonRefuseTheCameraAndThenScanTwice) {
    vendor_->waitsForPerson = true;
    vendor_->faceScan.retries = 1;
    beginFaceScan();
    tapWhenSeen("refuseCameraButton");
    EXPECT_EQ(report(), "CAMERA_PERMISSION_ERROR");
    heard_.clear();
    tapWhenSeen("nextButton");
    tapWhenSeen("finishScanButton");
    tapWhenSeen("scanAgainButton");
    tapWhenSeen("finishScanButton");
    EXPECT_TRUE(person_.waitFor([&] { return person_.sees("Welcome to Utopia Bank"); }));
    tapWhenSeen("continueButton");
    EXPECT_EQ(report(), "FACE_SCAN");
    EXPECT_THAT(vendor_->violations(), IsEmpty());
}

TEST_F(ScanRoad, TellsNoSecretAtTheDefaultLevel) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    KivoSDK::load("recognisable-key", "18");
    EXPECT_TRUE(join(*session_).succeeded(IdvEvents::JOIN_SESSION));
    const auto joined = storedSession();
    ASSERT_TRUE(joined);
    services.readID = std::make_shared<ReadID>();
    platform::install(services);
    acquire(AcquisitionObject::nfcScan);
    EXPECT_TRUE(person_.tap("idCardOptionContainerView"));
    EXPECT_EQ(report(), "DOCUMENT_SCAN");
    beginFaceScan();
    EXPECT_EQ(report(), "FACE_SCAN");
    service.inject(Endpoint::idScan, Fault::answer(R"({"recognisable":"answer"})"));
    acquire(AcquisitionObject::ocrScan);
    EXPECT_EQ(report(), "OCR_SCAN_FAILED");
    service.inject(Endpoint::update, Fault::answer(R"({"response-type":"fail","response-message":"recognisable"})"));
    const Call calls[] = {
        [&](auto done) { session_->upload(AcquisitionObject::selfieImage, "recognisable-data", done); },
        [&](auto done) { session_->update("inform", "recognisable-message", done); },
        [&](auto done) { session_->commit(done); },
        [&](auto done) { session_->join("recognisable-code", config(), done); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(answerTo(call).times, 1);
    }
    session_->reset();
    const auto printed = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();

    std::vector<std::string> secrets{"recognisable", "123456", "simulated-", "ERIKSSON", "https://"};
    for (const auto* settings : {&joined->idpConfig, &joined->idpBiodata, &joined->idpFaceMap}) {
        for (const auto& [key, value] : *settings) {
            secrets.push_back(value.size() > 4 ? value : "https://");
        }
    }
    std::ifstream certificate{service.trustedCertificates()};
    std::getline(certificate, secrets.emplace_back());
    std::getline(certificate, secrets.emplace_back());
    EXPECT_THAT(printed, HasSubstr("KivoBE_180(configuration: [target-env: TEST"));
    EXPECT_THAT(printed, HasSubstr("FaceScan success"));
    EXPECT_THAT(printed, Not(testing::ContainsRegex("[^A-Za-z0-9]" + joined->tId + "[^A-Za-z0-9]")));
    for (const auto& secret : secrets) {
        EXPECT_THAT(printed, Not(HasSubstr(secret)));
    }
}

} // namespace
} // namespace kivo::simulator
