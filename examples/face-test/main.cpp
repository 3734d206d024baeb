// A host's own test of its face step: the first scan times out, and the second scan is accepted and welcomed.
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Person.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <string>

int main() {
    using namespace kivo;

    simulator::IdentityService service;
    const auto vendor = std::make_shared<simulator::FaceTec>();
    const auto folder = std::filesystem::temp_directory_path() / ("face-test-" + std::to_string(getpid()));
    auto services =
        platform::linuxServices({.dataFolder = folder, .trustedCertificates = service.trustedCertificates()});
    services.reachability = std::make_shared<simulator::Reachability>();
    services.faceTec = vendor;
    platform::install(services);
    const auto page = service.joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});

    const auto start = std::make_shared<platform::ViewController>();
    const auto window = std::make_shared<platform::Window>();
    window->setRootViewController(std::make_shared<platform::NavigationController>(start));
    const auto session = KivoSDK::load("EXAMPLE-KEY", "18");
    session->setContext(start);
    session->sdkTheme()->faceScanSuccessMessageText = "Welcome to Utopia Bank";

    simulator::Person person{window};
    std::string answer;
    session->setAnswerQueue(platform::services().mainQueue);
    const auto keep = [&](const IdvOutcome& outcome) {
        answer = outcome ? IdvEventsHelper::eventName((*outcome)->responseType()) : name(outcome.error());
    };
    bool isGood = true;
    const auto expect = [&](const std::string& expected) {
        const auto came = person.waitFor([&] { return !answer.empty(); });
        std::cout << (came ? answer : came.error()) << '\n';
        isGood = answer == expected && isGood;
        answer.clear();
    };

    session->join("123456", std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face"),
                  keep);
    expect("JOIN_SESSION");
    vendor->faceScan.status = simulator::faceScanStatus::timeout;
    session->acquire(AcquisitionObject::facemapScan, nullptr, keep);
    isGood = person.tap("nextButton") && isGood;
    expect("TIMEOUT");
    vendor->faceScan = {};
    isGood = person.waitFor([&] { return person.tap("nextButton").has_value(); }) && isGood;
    expect("FACE_SCAN");
    isGood = vendor->successMessage() == "Welcome to Utopia Bank" && isGood;

    isGood = service.violations().empty() && vendor->violations().empty() && isGood;
    std::filesystem::remove_all(folder);
    return isGood ? 0 : 1;
}
