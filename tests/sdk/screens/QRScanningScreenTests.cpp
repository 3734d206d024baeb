#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>

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

struct FakeCapture final : platform::CaptureSession {
    bool running = false;

    bool canAddInput(const platform::CaptureInput& /*input*/) const override { return true; }

    void addInput(std::shared_ptr<platform::CaptureInput> /*input*/) override {}

    bool canAddOutput(const platform::CaptureMetadataOutput& /*output*/) const override { return true; }

    void addOutput(std::shared_ptr<platform::CaptureMetadataOutput> /*output*/) override {}

    bool isRunning() const override { return running; }

    void startRunning() override { running = true; }

    void stopRunning() override { running = false; }
};

class QRScanningScreen : public test::HostScreenFixture {
protected:
    std::shared_ptr<QRCodeScannerVC> shown() {
        auto screen = makeScreen<QRCodeScannerVC>("QRCodeScannerVC");
        screen->delegate = delegate;
        screen->themeObj = theme;
        outlet<QRScannerView>(*screen, "qrCodeScannerView")->captureSession = camera;
        push(screen);
        return screen;
    }

    /// What the camera view does with a code that it reads.
    void read(QRCodeScannerVC& screen, const std::string& text) const {
        screen.scanningSucceeded(text);
        camera->stopRunning();
    }

    std::shared_ptr<ThemeCustomization> theme = std::make_shared<ThemeCustomization>();
    std::shared_ptr<Scanned> delegate = std::make_shared<Scanned>();
    std::shared_ptr<FakeCapture> camera = std::make_shared<FakeCapture>();
};

TEST_F(QRScanningScreen, StopsAtAGoodCodeAndScansAgainOnTheNextVisit) {
    const auto screen = shown();
    EXPECT_TRUE(camera->running);
    read(*screen, R"({"code":"123456"})");
    EXPECT_EQ(delegate->heard, std::vector<std::string>{"123456"});
    advance(1h);
    EXPECT_FALSE(camera->running);
    screen->viewDidAppear(false);
    EXPECT_FALSE(camera->running) << "shown again without having been left";
    push(std::make_shared<platform::ViewController>());
    pop();
    EXPECT_TRUE(camera->running);
}

TEST_F(QRScanningScreen, LooksAgainThreeSecondsAfterABadCode) {
    const auto screen = shown();
    read(*screen, "4006381333931");
    EXPECT_EQ(delegate->heard, std::vector<std::string>{"invalid"});
    advance(2999ms);
    EXPECT_FALSE(camera->running);
    advance(1ms);
    EXPECT_TRUE(camera->running);
}

TEST_F(QRScanningScreen, WorksWithoutACamera) {
    camera = nullptr;
    auto screen = shown();
    screen->scanningSucceeded("no JSON");
    advance(3s);
    EXPECT_EQ(delegate->heard, std::vector<std::string>{"invalid"});
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
    EXPECT_TRUE(delegate->heard.empty());
}

TEST_F(QRScanningScreen, IsReleasedWhileItWaitsToLookAgain) {
    auto screen = shown();
    const std::weak_ptr weak = screen;
    read(*screen, "no JSON");
    screen.reset();
    pop();
    EXPECT_TRUE(weak.expired());
    advance(3s);
    EXPECT_FALSE(camera->running);
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
