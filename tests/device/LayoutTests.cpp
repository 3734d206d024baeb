#include "DeviceFixture.hpp"
#include "app/HostLook.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace kivo::test {
namespace {

using namespace platform;
using testing::Contains;
using testing::IsEmpty;

class ScreenLayout : public DeviceFixture {
protected:
    /// At every reading size, on a large and on a small display.
    void expectNoFaults(const std::string& what) const {
        for (const auto size : {Size{390, 844}, Size{320, 568}}) {
            window->setSize(size);
            for (int raw = 0; raw <= RawValues<ContentSizeCategory>::last; ++raw) {
                window->setPreferredContentSizeCategory(static_cast<ContentSizeCategory>(raw));
                EXPECT_THAT(device::layoutFaults(*window), IsEmpty())
                    << what << " at reading size " << raw << ", " << size.width << " points wide";
            }
        }
    }
};

TEST_F(ScreenLayout, ShowsEverythingAtEveryReadingSize) {
    showCodeScreen();
    expectNoFaults("boxes");
    showCodeScreen(CodeTextFieldStyle::single);
    expectNoFaults("one field");
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
        expectNoFaults(identifier);
        navigation->popToViewController(host, /*animated=*/false);
    }
    const auto alert = std::make_shared<AlertController>("", "Are you sure, you want to terminate the process?");
    alert->addAction({.title = "OK"});
    alert->addAction({.title = "Cancel"});
    navigation->present(alert, /*animated=*/false);
    mainLoop->drain();
    ASSERT_EQ(window->visibleViewController(), alert);
    expectNoFaults("alert");
}

TEST_F(ScreenLayout, IsReadableInTheDarkAndLeavesNoColorBehind) {
    const auto look = std::make_shared<device::app::HostLook>(services.bundles);
    services.bundles = look;
    platform::install(services);
    const auto app = std::make_shared<device::app::Host>(window, "18");
    app->start();
    const auto screens = std::dynamic_pointer_cast<NavigationController>(window->rootViewController());
    const auto expectReadable = [&](const std::string& what) {
        mainLoop->drain();
        look->dress(*window);
        EXPECT_THAT(device::layoutFaults(*window), IsEmpty()) << what << (look->isDark() ? ", dark" : ", light");
    };
    for (const bool dark : {true, false}) {
        look->setDark(dark);
        app->setColors(look->colors());
        expectReadable("the host's screen");
        const auto storyboard = Storyboard::open("ZORFramework", services.bundles->main());
        ASSERT_TRUE(storyboard) << storyboard.error();
        for (const auto* scene : {"AuthMenuVCID", "FinalStatusVC", "QRCodeScannerVC", "QRCodeVC"}) {
            const auto screen = (*storyboard)->instantiate(scene);
            ASSERT_TRUE(screen) << screen.error();
            screens->pushViewController(*screen, /*animated=*/false);
            const auto icon = window->find<ImageView>("documentOptionOneImageView");
            if (icon) {
                icon->setImage(Image::named("documentOptionOneImage"));
            }
            expectReadable(scene);
        }
        simulator::ReadID vendor{simulator::Reading::byPerson()};
        const auto flow = std::make_shared<readid::NFCWithAccessControlFlow>();
        flow->baseUrl = "https://proxy.example";
        ASSERT_TRUE(vendor.identify(screens, ModalPresentationStyle::automatic, flow, [](const auto&) {}));
        expectReadable("a vendor's screen");
        screens->dismiss(/*animated=*/false);
        screens->popToViewController(screens->viewControllers().front(), /*animated=*/false);
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
        {R"("second" is too small for its text)", above, {.top = 60, .left = 0, .width = 20, .height = 20}},
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
    }
}

} // namespace
} // namespace kivo::test
