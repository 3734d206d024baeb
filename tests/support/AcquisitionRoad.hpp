#pragma once

#include "Configuration/environment/SdkBundle.hpp"
#include "support/Eventually.hpp"
#include "support/HostFixture.hpp"

#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/Person.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kivo::test {

/// A host that acquires over real TLS with the simulated vendors' libraries, and a person in front of its screens. Time
/// passes while the person waits.
class AcquisitionRoad : public HostFixture {
protected:
    AcquisitionRoad()
        : HostFixture{hostPerEndpoint()} {
        services.readID = reader;
        services.faceTec = scanner;
        platform::install(services);
        std::filesystem::copy(*sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                              folder.path() / "Host.bundle");
        window->setRootViewController(navigation);
        theme->faceScanSuccessMessageText = "Welcome to Utopia Bank";
        theme->faceScanUploadMessage = "Still sending";
    }

    /// From the host's start screen: joins a new session and acquires in it.
    void acquire(AcquisitionObject object, const char* version = "18") {
        navigation->dismiss(/*animated=*/false);
        navigation->popToViewController(start, /*animated=*/false);
        pass();
        session = KivoSDK::load("KEY", version);
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        session->setTheme(theme);
        session->setContext(start);
        heard.clear();
        session->acquire(object, nullptr, [this](const IdvOutcome& outcome) {
            heard += heard.empty() ? "" : ", ";
            heard += outcome ? IdvEventsHelper::eventName((*outcome)->responseType()) : name(outcome.error());
        });
    }

    /// Shows the face scan screen and goes on to the library.
    void scanFace() {
        acquire(AcquisitionObject::facemapScan);
        tap("nextButton");
    }

    /// What the host has heard when it first hears something, then forgotten. Two answers are separated by a comma.
    std::string answer() {
        EXPECT_TRUE(becomes([this] { return !heard.empty(); })) << person.screenInWords();
        return std::exchange(heard, "");
    }

    /// Waits while the network is real and the delays of screens and vendors pass by hand.
    bool becomes(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (!mainLoop->runUntil(condition, std::chrono::milliseconds{1})) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            clock->advance(std::chrono::milliseconds{10});
        }
        return true;
    }

    /// Lets a second pass.
    void pass() const {
        for (int tick = 0; tick < 100; ++tick) {
            clock->advance(std::chrono::milliseconds{10});
            mainLoop->drain();
        }
    }

    /// Taps the control as soon as it can be reached.
    void tap(const char* name) {
        EXPECT_TRUE(becomes([&] { return person.tap(name).has_value(); })) << name << ": " << person.screenInWords();
    }

    /// Has the host's bundle list one pin.
    void pin(const std::string& pin) const {
        folder.write("Host.bundle/readid_certificates.plist",
                     "<plist version=\"1.0\"><array><string>" + pin + "</string></array></plist>");
    }

    std::shared_ptr<simulator::ReadID> reader = std::make_shared<simulator::ReadID>();
    std::shared_ptr<simulator::FaceTec> scanner = std::make_shared<simulator::FaceTec>();
    std::shared_ptr<ThemeCustomization> theme = std::make_shared<ThemeCustomization>();
    std::shared_ptr<platform::ViewController> start = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation =
        std::make_shared<platform::NavigationController>(start);
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    simulator::Person person{window, mainLoop, clock};
    std::shared_ptr<KivoAPI> session;
    std::string heard;

private:
    static simulator::IdentityServiceConfiguration hostPerEndpoint() {
        simulator::IdentityServiceConfiguration configuration;
        configuration.hostPerEndpoint = true;
        return configuration;
    }
};

} // namespace kivo::test
