// A host's own test of its screens: a simulated person mistypes the code, corrects it, scans it as well and closes.
#include <kivo/kivo.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/Person.hpp>

#include <iostream>
#include <string>
#include <vector>

int main() {
    using namespace kivo;

    const auto camera = std::make_shared<simulator::Camera>();
    platform::Services services;
    services.camera = camera;
    platform::install(services);

    const auto session = KivoSDK::load("EXAMPLE-KEY", "18");
    session->sdkTheme()->codeScreenGetStartedTitle = "Welcome to Utopia Bank";
    session->sdkTheme()->zorCloseButtonAppearance->closeButtonIsHidden = false;

    const auto start = std::make_shared<platform::ViewController>();
    const auto window = std::make_shared<platform::Window>();
    window->setRootViewController(std::make_shared<platform::NavigationController>(start));
    session->setContext(start);

    std::vector<std::string> heard;
    session->acquire(AcquisitionObject::activationCode, nullptr, [&](const IdvOutcome& outcome) {
        heard.push_back(outcome ? (*outcome)->data() : std::string{name(outcome.error())});
    });

    simulator::Person person{window};
    bool isGood = person.sees("Welcome to Utopia Bank");
    const auto doing = [&](const simulator::Person::Outcome& outcome) {
        if (!outcome) {
            std::cout << outcome.error() << '\n';
            isGood = false;
        }
    };
    doing(person.type("textFieldDigitOne", "129"));
    doing(person.pressDelete(1));
    doing(person.typeOnKeyboard("3456"));
    doing(person.tap("scanQRCodeButton"));
    doing(person.waitFor([&] { return person.sees("Aim at the QR code"); }));
    camera->showCode(R"({"code":"SCANNED"})");
    doing(person.waitFor([&] { return heard.size() == 2; }));
    doing(person.tap("scanManuallyButton"));
    doing(person.waitFor([&] { return person.sees("Welcome to Utopia Bank"); }));
    doing(person.tap("closeButton"));
    doing(person.waitFor([&] { return heard.size() == 3; }));

    for (const auto& each : heard) {
        std::cout << each << '\n';
    }
    return isGood && heard == std::vector<std::string>{"123456", "SCANNED", "CANCELLED_BY_USER"} ? 0 : 1;
}
