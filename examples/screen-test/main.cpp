// A host's own test of its screens. A simulated person enters a one-time code on a screen of the host, mistypes and
// corrects the activation code, scans the code, closes the screen, and reads the final status screen in the host's
// layout.
#include <kivo/kivo.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
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

    const auto bank = platform::Storyboard::open("Bank", platform::services().bundles->main());
    const auto start = bank ? (*bank)->instantiate("OneTimeCode") : std::unexpected{bank.error()};
    const auto end = bank ? (*bank)->instantiate("AllDone") : start;
    if (!start || !end) {
        std::cout << (start ? end : start).error() << '\n';
        return 1;
    }
    const auto window = std::make_shared<platform::Window>();
    window->setRootViewController(std::make_shared<platform::NavigationController>(*start));
    session->setContext(*start);

    simulator::Person person{window};
    bool isGood = true;
    const auto doing = [&](const simulator::Person::Outcome& outcome) {
        if (!outcome) {
            std::cout << outcome.error() << '\n';
            isGood = false;
        }
    };
    std::vector<std::string> heard;
    const auto oneTimeCode = (*start)->view()->find<LuOTPView>("code");
    oneTimeCode->otpEnteredString = [&](std::string code) { heard.push_back(std::move(code)); };
    oneTimeCode->getResponder();
    for (const auto* key : {"7", "8", "9"}) {
        doing(person.typeOnKeyboard(key));
    }

    session->acquire(AcquisitionObject::activationCode, nullptr, [&](const IdvOutcome& outcome) {
        heard.push_back(outcome ? (*outcome)->data() : std::string{name(outcome.error())});
    });
    doing(person.waitFor([&] { return person.sees("Welcome to Utopia Bank"); }));
    doing(person.type("textFieldDigitOne", "129"));
    doing(person.pressDelete(1));
    doing(person.typeOnKeyboard("3456"));
    doing(person.tap("scanQRCodeButton"));
    doing(person.waitFor([&] { return person.sees("Aim at the QR code"); }));
    camera->showCode(R"({"code":"SCANNED"})");
    doing(person.waitFor([&] { return heard.size() == 3; }));
    doing(person.tap("scanManuallyButton"));
    doing(person.waitFor([&] { return person.sees("Welcome to Utopia Bank"); }));
    doing(person.tap("closeButton"));
    doing(person.waitFor([&] { return heard.size() == 4; }));

    (*start)->present(*end, /*animated=*/true);
    doing(person.waitFor([&] { return person.sees("Welcome on board"); }));
    doing(person.tap("backToHomeButton"));
    doing(person.waitFor([&] { return !(*start)->presentedViewController(); }));

    for (const auto& each : heard) {
        std::cout << each << '\n';
    }
    return isGood && heard == std::vector<std::string>{"789", "123456", "SCANNED", "CANCELLED_BY_USER"} ? 0 : 1;
}
