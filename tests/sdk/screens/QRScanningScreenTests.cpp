#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>

#include <string>
#include <vector>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::Button;

struct Scanned final : QRScannerVCDelegate {
    std::vector<std::string> heard;

    void qrCodeScanned(std::string code) override { heard.push_back(std::move(code)); }

    void invalidQRCodeScanned() override { heard.emplace_back("invalid"); }
};

class QRScanningScreen : public test::HostScreenFixture {
protected:
    std::shared_ptr<QRCodeScannerVC> shown() {
        auto screen = makeScreen<QRCodeScannerVC>("QRCodeScannerVC");
        screen->delegate = delegate;
        screen->themeObj = theme;
        push(screen);
        return screen;
    }

    /// Holds a code up and waits for what the screen makes of it.
    std::string scanned(std::string_view text) {
        delegate->heard.clear();
        camera->showCode(text);
        return await([this] { return !delegate->heard.empty(); }) ? delegate->heard.back() : "nothing";
    }

    std::shared_ptr<ThemeCustomization> theme = std::make_shared<ThemeCustomization>();
    std::shared_ptr<Scanned> delegate = std::make_shared<Scanned>();
};

TEST_F(QRScanningScreen, TakesTheCodeOfAPayloadThatIsSound) {
    struct Row {
        std::string text;
        std::string heard;
    };

    const Row rows[] = {
        {R"({"code":"123456"})", "123456"},
        {R"({"code":""})", ""},
        {R"({"version":2,"code":"ABC","x":[{}]})", "ABC"},
        {"{\"code\":\"\u00e9\u6f22\"}", "\u00e9\u6f22"},
        {R"({"code":")" + std::string(2500, 'A') + R"("})", std::string(2500, 'A')},
        {R"({"code":123456})", "invalid"},
        {R"({"Code":"123456"})", "invalid"},
        {"123456", "invalid"},
        {"{\"code\":\"12\xFF\"}", "invalid"},
        {"{\"code\":\"12\"}\xC3", "invalid"},
    };
    for (const auto& row : rows) {
        const auto screen = shown();
        EXPECT_EQ(scanned(row.text), row.heard) << row.text;
        EXPECT_FALSE(camera->isOn()) << row.text;
        camera->showNothing();
        pop();
    }
}

TEST_F(QRScanningScreen, StopsAtAGoodCodeAndScansAgainOnTheNextVisit) {
    const auto screen = shown();
    EXPECT_EQ(scanned(R"({"code":"123456"})"), "123456");
    camera->showNothing();
    advance(1h);
    EXPECT_FALSE(camera->isOn());
    screen->viewDidAppear(false);
    EXPECT_FALSE(camera->isOn()) << "shown again without having been left";
    push(std::make_shared<platform::ViewController>());
    pop();
    EXPECT_TRUE(camera->isOn());
}

TEST_F(QRScanningScreen, LooksAgainThreeSecondsAfterABadCode) {
    const auto screen = shown();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    camera->showNothing();
    advance(2999ms);
    EXPECT_FALSE(camera->isOn());
    advance(1ms);
    EXPECT_TRUE(camera->isOn());
    EXPECT_EQ(scanned(R"({"code":"A"})"), "A");
}

TEST_F(QRScanningScreen, RestsUnderAnotherScreenAndAfterAGoodCode) {
    shown();
    EXPECT_TRUE(camera->isOn());
    push(std::make_shared<platform::ViewController>());
    EXPECT_FALSE(camera->isOn());
    pop();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    push(std::make_shared<platform::ViewController>());
    advance(3s);
    EXPECT_FALSE(camera->isOn()) << "not under the other screen";
    camera->showNothing();
    pop();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    push(std::make_shared<platform::ViewController>());
    camera->showNothing();
    pop();
    EXPECT_EQ(scanned(R"({"code":"A"})"), "A");
    advance(3s);
    EXPECT_FALSE(camera->isOn()) << "the bad code before it is forgotten";
}

TEST_F(QRScanningScreen, StaysBlackWithoutACamera) {
    using enum simulator::Camera::Refusal;
    for (const auto refusal : {none, opening, input, output}) {
        camera->setConnected(refusal != none);
        camera->setRefusal(refusal);
        const auto screen = shown();
        EXPECT_FALSE(camera->isOn());
        const auto session = outlet<QRScannerView>(*screen, "qrCodeScannerView")->captureSession;
        EXPECT_EQ(session != nullptr, refusal == none || refusal == opening);
        EXPECT_FALSE(outlet<platform::PreviewView>(*screen, "qrCodeScannerView")->previewSession());
        pop();
    }
}

TEST_F(QRScanningScreen, ComesBackToACameraThatWasUnplugged) {
    const auto screen = shown();
    camera->setConnected(false);
    push(std::make_shared<platform::ViewController>());
    pop();
    EXPECT_FALSE(camera->isOn());
    camera->setConnected(true);
    push(std::make_shared<platform::ViewController>());
    pop();
    EXPECT_EQ(scanned(R"({"code":"A"})"), "A");
}

TEST_F(QRScanningScreen, GoesBackByEitherButtonWithoutAWord) {
    theme->zorCloseButtonAppearance->closeButtonIsHidden = false;
    for (const auto* name : {"scanManuallyButton", "closeButton"}) {
        auto pushed = shown();
        EXPECT_TRUE(pushed->navigationItem()->rightBarButtonItem()) << "the bar has its own close button";
        EXPECT_TRUE(outlet<Button>(*pushed, name)->tap());
        settle();
        EXPECT_EQ(navigation->topViewController(), host);

        auto presented = makeScreen<QRCodeScannerVC>("QRCodeScannerVC");
        presented->themeObj = theme;
        host->present(presented, false);
        settle();
        EXPECT_TRUE(outlet<Button>(*presented, name)->tap());
        settle();
        EXPECT_EQ(host->presentedViewController(), nullptr);
        const std::weak_ptr weak = presented;
        presented.reset();
        EXPECT_TRUE(weak.expired());
    }
    EXPECT_FALSE(camera->isOn());
    EXPECT_TRUE(delegate->heard.empty());
}

TEST_F(QRScanningScreen, IsReleasedWhileItWaitsToLookAgain) {
    auto screen = shown();
    const std::weak_ptr weak = screen;
    EXPECT_EQ(scanned("no JSON"), "invalid");
    screen.reset();
    pop();
    EXPECT_TRUE(weak.expired());
    advance(3s);
    EXPECT_FALSE(camera->isOn());
}

TEST_F(QRScanningScreen, TakesTitleAndLooksFromTheTheme) {
    const auto defaultTitle = outlet<Button>(*shown(), "scanManuallyButton")->title();
    EXPECT_NE(defaultTitle, "");
    theme->codeScreenEnterCodeManuallyButtonTitle = "Type it";
    theme->qrScanScreenEnterManuallyButtonTitleColor = platform::Color::black();
    theme->qrScanScreenEnterManuallyButtonBackgroundColor = platform::Color::white(0.5);
    theme->primaryButtonFont = platform::Font{.name = "Button", .pointSize = 20};
    const auto screen = shown();
    window->setPreferredContentSizeCategory(platform::ContentSizeCategory::extraSmall);
    const auto button = outlet<Button>(*screen, "scanManuallyButton");
    EXPECT_EQ(button->title(), "Type it");
    EXPECT_EQ(button->textColor(), platform::Color::black());
    EXPECT_EQ(button->backgroundColor(), platform::Color::white(0.5));
    EXPECT_EQ(button->layer().cornerRadius, 25);
    EXPECT_NEAR(button->shownFont().pointSize, 20.0 * 16 / 17, 0.51) << "bounded by the theme's smallest size";
}

} // namespace
} // namespace kivo
