#include "DeviceFixture.hpp"
#include "app/HostLook.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <functional>
#include <string_view>

namespace kivo::test {
namespace {

using namespace platform;
using testing::Contains;
using testing::IsEmpty;

class ScreenLayout : public DeviceFixture {
protected:
    /// Shows each screen of the SDK in turn, and an alert, each with what else waits for a theme or a session.
    void eachScreen(const std::function<void(const std::string& name)>& look) {
        showCodeScreen();
        seeAll({"codeErrorLabel", "closeButton"});
        look("boxes");
        window->find<Label>("codeErrorLabel")
            ->setText(
                localizedText("There is no connection to the service. Check the network, then enter the code again."));
        look("boxes without a connection");
        showCodeScreen(CodeTextFieldStyle::single);
        look("one field");
        const auto bundle = services.bundles->main();
        const auto storyboard = Storyboard::open("ZORFramework", bundle);
        ASSERT_TRUE(storyboard) << storyboard.error();
        std::ifstream file{*bundle->pathForResource("ZORFramework", "storyboard")};
        const auto layout = nlohmann::json::parse(file, nullptr, true, /*ignore_comments=*/true);
        for (const auto& [identifier, scene] : layout.at("scenes").items()) {
            const auto screen = (*storyboard)->instantiate(identifier);
            ASSERT_TRUE(screen) << screen.error();
            navigation->pushViewController(*screen, /*animated=*/false);
            mainLoop->drain();
            seeAll({"closeButton", "titleInfoLabel", "processDescriptionTextView", "scanPassportLabel",
                    "scanResidentCardLabel", "optionsContainerStackView", "scanErrorLabel"});
            look(identifier);
            if (const auto done = window->find("stepDoneView")) {
                done->setHidden(false);
                look(identifier + ", done");
            }
            navigation->popToViewController(host, /*animated=*/false);
        }
        const auto alert = std::make_shared<AlertController>("", "Are you sure, you want to terminate the process?");
        alert->addAction({.title = "OK"});
        alert->addAction({.title = "Cancel"});
        navigation->present(alert, /*animated=*/false);
        mainLoop->drain();
        ASSERT_EQ(window->visibleViewController(), alert);
        look("alert");
        navigation->dismiss(/*animated=*/false);
        mainLoop->drain();
    }

    void expectNoFaults(const std::string& where, double leastContrast) {
        ++looks_;
        EXPECT_THAT(device::layoutFaults(*window, leastContrast), IsEmpty()) << where;
    }

    int looks() const { return looks_; }

private:
    void seeAll(std::initializer_list<const char*> names) const {
        for (const auto* name : names) {
            if (const auto view = window->find(name)) {
                view->setHidden(false);
            }
        }
    }

    int looks_ = 0;
};

/// Contrast of texts and symbols, as the guidelines for accessible pages ask for.
constexpr double readable = 4.5;

const Size displays[] = {{390, 844}, {320, 568}, {430, 932}, {844, 390}, {820, 1180}};

TEST_F(ScreenLayout, ShowsEverythingInEveryLanguageAtEveryReadingSizeOnEveryDisplay) {
    for (const auto* language : {"en", "de", "fr", "es", "pl", "ar", "ja"}) {
        speak(language);
        eachScreen([&](const std::string& screen) {
            for (const auto& size : displays) {
                window->setSize(size);
                for (int raw = 0; raw <= RawValues<ContentSizeCategory>::last; ++raw) {
                    window->setPreferredContentSizeCategory(static_cast<ContentSizeCategory>(raw));
                    expectNoFaults(screen + " in " + language + " at reading size " + std::to_string(raw) + ", " +
                                       std::to_string(static_cast<int>(size.width)) + " points wide",
                                   readable);
                }
            }
        });
        EXPECT_EQ(window->layoutDirection() == LayoutDirection::rightToLeft, std::string_view{language} == "ar");
    }
    EXPECT_EQ(looks(), 7 * 12 * 5 * 12);
}

TEST_F(ScreenLayout, AtTheLargestReadingSizeACodeIsTypedWithoutScrolling) {
    for (const auto* language : {"en", "de", "fr", "es", "pl", "ar", "ja"}) {
        speak(language);
        showCodeScreen();
        window->setPreferredContentSizeCategory(ContentSizeCategory::accessibilityExtraExtraExtraLarge);
        window->layoutIfNeeded();
        EXPECT_LE(window->find("textFieldDigitOne")->frameOnScreen().bottom(), 844 - window->safeArea().bottom)
            << language;
    }
}

TEST_F(ScreenLayout, IsReadableInTheLightAndInTheDark) {
    const auto former = window->rootViewController();
    for (const auto style : {UserInterfaceStyle::dark, UserInterfaceStyle::light}) {
        const std::string name = style == UserInterfaceStyle::dark ? ", dark" : ", light";
        window->setRootViewController(former);
        session->setContext(host);
        mainLoop->drain();
        eachScreen([&](const std::string& screen) {
            // Shown in the other appearance before.
            window->setUserInterfaceStyle(style);
            expectNoFaults(screen + name, readable);
        });
        const auto app = std::make_shared<device::app::Host>(window, "18");
        app->start();
        app->setColors(device::app::hostColors());
        mainLoop->drain();
        expectNoFaults("the host's screen" + name, readable);
        const auto screens = std::dynamic_pointer_cast<NavigationController>(window->rootViewController());
        simulator::ReadID vendor{simulator::Reading::byPerson()};
        const auto flow = std::make_shared<readid::NFCWithAccessControlFlow>();
        flow->baseUrl = "https://proxy.example";
        ASSERT_TRUE(vendor.identify(screens, ModalPresentationStyle::automatic, flow, [](const auto&) {}));
        mainLoop->drain();
        expectNoFaults("a vendor's screen" + name, readable);
        screens->dismiss(/*animated=*/false);
        mainLoop->drain();
    }
}

TEST_F(ScreenLayout, ASimulatedVendorSpeaksThePersonsLanguage) {
    const struct {
        const char* language;
        const char* badge;
        const char* cancel;
    } rows[] = {{"C", "Simulated: no\u00a0camera, no\u00a0chip", "Cancel"},
                {"de_AT", "Simuliert: keine\u00a0Kamera, kein\u00a0Chip", "Abbrechen"},
                {"ar", "محاكاة: بلا\u00a0كاميرا\u00a0وبلا\u00a0شريحة", "إلغاء"},
                {"ja", "シミュレーション：カメラ・ICなし", "キャンセル"}};

    for (const auto& [language, badge, cancel] : rows) {
        speak(language);
        simulator::ReadID vendor{simulator::Reading::byPerson()};
        const auto flow = std::make_shared<readid::NFCWithAccessControlFlow>();
        flow->baseUrl = "https://proxy.example";
        ASSERT_TRUE(vendor.identify(navigation, ModalPresentationStyle::automatic, flow, [](const auto&) {}));
        mainLoop->drain();
        EXPECT_EQ(window->find<Label>("simulatedBadge")->text(), badge);
        EXPECT_EQ(window->find<Button>("userCancelled")->title(), cancel);
        for (int raw = 0; raw <= RawValues<ContentSizeCategory>::last; ++raw) {
            window->setPreferredContentSizeCategory(static_cast<ContentSizeCategory>(raw));
            expectNoFaults(language, readable);
        }
        navigation->dismiss(/*animated=*/false);
        mainLoop->drain();
    }
}

TEST_F(ScreenLayout, FaultsAreNamed) {
    const Placement above{.top = 0, .left = 0, .width = 200, .height = 40};
    const Placement below{.top = 60, .left = 0, .width = 200, .height = 40};

    const struct {
        const char* fault;
        Placement first;
        Placement second;
    } rows[] = {
        {R"("first" and "second" overlap)", above, {.top = 30, .left = 0, .width = 200, .height = 40}},
        {R"("first" is too small for its text)", {.top = 0, .left = 0, .width = 40, .height = 20}, below},
        {R"("first" breaks a word)",
         {.top = 0, .left = 0, .width = 30, .height = 300},
         {.top = 0, .right = 0, .width = 200, .height = 40}},
        {R"("second" is too small for its text)", above, {.top = 60, .left = 0, .width = 60, .height = 10}},
        {R"("second" is partly or wholly out of sight)", above, {.left = 0, .bottom = -60, .height = 40}},
        {R"("second" has no room)", above, {.top = 60, .left = 0, .width = 0, .height = 0}},
    };

    for (const auto& [fault, first, second] : rows) {
        const auto label = std::make_shared<Label>();
        label->setIdentifier("first");
        label->setText("A text of some length");
        label->setPlacement(first);
        const auto button = std::make_shared<Button>();
        button->setIdentifier("second");
        button->setTitle("Go");
        button->setPlacement(second);
        const auto screen = std::make_shared<ViewController>();
        screen->view()->addSubview(label);
        screen->view()->addSubview(button);
        window->setRootViewController(screen);
        EXPECT_THAT(device::layoutFaults(*window), Contains(fault));
        label->setTextColor(Color::white(0.8));
        EXPECT_THAT(device::layoutFaults(*window), Contains(R"("first" hardly differs from its background)"));
        label->setTextColor(Color::black());
        label->setPlacement(above);
        button->setPlacement(below);
        EXPECT_THAT(device::layoutFaults(*window), IsEmpty()) << "after mending " << fault;
        const auto neighbour = std::make_shared<Button>();
        neighbour->setTitle("Stop");
        neighbour->setPlacement({.top = 104, .left = 0, .width = 200, .height = 30});
        screen->view()->addSubview(neighbour);
        EXPECT_THAT(device::layoutFaults(*window), Contains(R"("Stop" is too small for a finger)"));
        neighbour->setTitle("Go");
        neighbour->setPlacement({.top = 0, .left = 220, .width = 100, .height = 44});
        EXPECT_THAT(device::layoutFaults(*window), Contains(R"("second" has the name of another control, "Go")"));
        neighbour->setTitle("");
        EXPECT_THAT(device::layoutFaults(*window), Contains(R"("" has no name for assistive technology)"));
    }
}

} // namespace
} // namespace kivo::test
