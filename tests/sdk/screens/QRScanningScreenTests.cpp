#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/NavigationItem.hpp>

namespace kivo {
namespace {

using namespace std::chrono_literals;

class QRScanningScreen : public test::HostScreenFixture {
protected:
    /// Holds a code up and waits for what the screen makes of it.
    std::string scanned(std::string_view text) {
        ears->restart();
        camera->showCode(text);
        return await([this] { return !ears->heard.empty(); }) ? ears->heard.back() : "nothing";
    }
};

TEST_F(QRScanningScreen, TakesTheCodeOfAPayloadThatIsSound) {
    struct Row {
        std::string text;
        std::string heard;
    };

    const Row rows[] = {
        {R"({"code":"123456"})", "scanned 123456"},
        {R"({"code":""})", "scanned "},
        {R"( {"version":2,"code":"ABC","x":[{}]} )", "scanned ABC"},
        {"{\"code\":\"\u00e9\u6f22\"}", "scanned \u00e9\u6f22"},
        {R"({"code":"\u00e9\n"})", "scanned \u00e9\n"},
        {R"({"code":")" + std::string(2500, 'A') + R"("})", "scanned " + std::string(2500, 'A')},
        {R"({"code":123456})", "invalid"},
        {R"({"code":null})", "invalid"},
        {R"({"Code":"123456"})", "invalid"},
        {R"(["code"])", "invalid"},
        {R"({"code":"123456"} x)", "invalid"},
        {"123456", "invalid"},
        {"{\"code\":\"12\xFF\"}", "invalid"},
        {"{\"code\":\"12\"}\xC3", "invalid"},
    };
    for (const auto& row : rows) {
        pushed<QRCodeScannerVC>();
        EXPECT_EQ(scanned(row.text), row.heard) << row.text;
        EXPECT_FALSE(camera->isOn()) << row.text;
        camera->showNothing();
        pop();
    }
}

TEST_F(QRScanningScreen, StopsAtAGoodCodeAndScansAgainOnTheNextVisit) {
    const auto screen = pushed<QRCodeScannerVC>();
    EXPECT_EQ(scanned(R"({"code":"123456"})"), "scanned 123456");
    camera->showNothing();
    advance(1min);
    EXPECT_FALSE(camera->isOn());
    screen->viewDidAppear(false);
    EXPECT_FALSE(camera->isOn()) << "shown again without having been left";
    cover();
    pop();
    EXPECT_TRUE(camera->isOn());
}

TEST_F(QRScanningScreen, LooksAgainThreeSecondsAfterABadCode) {
    const auto screen = pushed<QRCodeScannerVC>();
    const auto tells = [&] {
        EXPECT_NE(outlet(*screen, "scanErrorLabel")->isHidden(), outlet(*screen, "scanHintLabel")->isHidden());
        return !outlet(*screen, "scanErrorLabel")->isHidden();
    };
    EXPECT_EQ(scanned("no JSON"), "invalid");
    camera->showNothing();
    advance(2999ms);
    EXPECT_FALSE(camera->isOn());
    EXPECT_TRUE(tells());
    advance(1ms);
    EXPECT_TRUE(camera->isOn());
    EXPECT_FALSE(tells());
    EXPECT_EQ(scanned(R"({"code":"A"})"), "scanned A");
}

TEST_F(QRScanningScreen, RestsUnderAnotherScreenAndAfterAGoodCode) {
    pushed<QRCodeScannerVC>();
    EXPECT_TRUE(camera->isOn());
    cover();
    EXPECT_FALSE(camera->isOn());
    pop();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    cover();
    advance(3s);
    EXPECT_FALSE(camera->isOn()) << "not under the other screen";
    camera->showNothing();
    pop();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    cover();
    camera->showNothing();
    pop();
    EXPECT_EQ(scanned(R"({"code":"A"})"), "scanned A");
    advance(3s);
    EXPECT_FALSE(camera->isOn()) << "the bad code before it is forgotten";
}

TEST_F(QRScanningScreen, StaysBlackAndSaysWhatToDoWithoutACamera) {
    using enum simulator::Camera::Refusal;
    for (const auto refusal : {none, opening, input, output}) {
        camera->setConnected(refusal != none);
        camera->setRefusal(refusal);
        const auto screen = pushed<QRCodeScannerVC>();
        EXPECT_FALSE(camera->isOn());
        const auto session = outlet<QRScannerView>(*screen, "qrCodeScannerView")->captureSession;
        EXPECT_EQ(session != nullptr, refusal == none || refusal == opening);
        EXPECT_FALSE(outlet<platform::PreviewView>(*screen, "qrCodeScannerView")->previewSession());
        EXPECT_EQ(outlet<platform::Label>(*screen, "scanHintLabel")->text(),
                  "The camera cannot be used here. Type the code instead.");
        pop();
    }
}

TEST_F(QRScanningScreen, ComesBackToACameraThatWasUnplugged) {
    pushed<QRCodeScannerVC>();
    camera->setConnected(false);
    cover();
    pop();
    EXPECT_FALSE(camera->isOn());
    camera->setConnected(true);
    cover();
    pop();
    EXPECT_EQ(scanned(R"({"code":"A"})"), "scanned A");
}

TEST_F(QRScanningScreen, IsReleasedWhileItWaitsToLookAgain) {
    auto screen = pushed<QRCodeScannerVC>();
    const std::weak_ptr weak = screen;
    EXPECT_EQ(scanned("no JSON"), "invalid");
    screen.reset();
    pop();
    EXPECT_TRUE(weak.expired());
    advance(3s);
    EXPECT_FALSE(camera->isOn());
}

/// A camera, its session, input and output in one, whose sight is what a test says.
struct FakeCamera final : platform::Camera,
                          platform::CaptureSession,
                          platform::CaptureDevice,
                          platform::CaptureInput,
                          platform::CaptureMetadataOutput,
                          std::enable_shared_from_this<FakeCamera> {
    bool running = false;
    std::vector<platform::MetadataObjectType> types{};
    std::weak_ptr<platform::CaptureMetadataOutputDelegate> listener{};
    std::shared_ptr<platform::DispatchQueue> queue{};

    std::shared_ptr<platform::CaptureSession> makeSession() override { return shared_from_this(); }

    std::shared_ptr<platform::CaptureDevice> defaultVideoDevice() override { return shared_from_this(); }

    std::shared_ptr<platform::CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& /*device*/) override {
        return shared_from_this();
    }

    std::shared_ptr<platform::CaptureMetadataOutput> makeMetadataOutput() override { return shared_from_this(); }

    bool canAddInput(const CaptureInput& /*input*/) const override { return true; }

    void addInput(std::shared_ptr<CaptureInput> /*input*/) override {}

    bool canAddOutput(const CaptureMetadataOutput& /*output*/) const override { return true; }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> /*output*/) override {}

    bool isRunning() const override { return running; }

    void startRunning() override { running = true; }

    void stopRunning() override { running = false; }

    platform::PreviewFrame preview() const override { return {}; }

    void setDelegate(std::weak_ptr<platform::CaptureMetadataOutputDelegate> delegate,
                     std::shared_ptr<platform::DispatchQueue> on) override {
        listener = std::move(delegate);
        queue = std::move(on);
    }

    void setObjectTypes(std::vector<platform::MetadataObjectType> wanted) override { types = std::move(wanted); }
};

struct VibratingWorkspace final : platform::Workspace {
    std::function<void()> onVibration = [] {};

    void open(const std::string& /*url*/) override {}

    void vibrate() override { onVibration(); }
};

TEST_F(QRScanningScreen, TakesTheFirstObjectOnlyOfTheFourKindsAndThenStops) {
    const auto fake = std::make_shared<FakeCamera>();
    const auto workspace = std::make_shared<VibratingWorkspace>();
    platform::Services services;
    services.camera = fake;
    services.workspace = workspace;
    platform::install(services);
    bool runsWhenHeard = false;
    int vibrations = 0;
    workspace->onVibration = [&] { vibrations += ears->heard.empty() ? 1 : 0; };
    ears->onHeard = [&] { runsWhenHeard = fake->running; };

    using enum platform::MetadataObjectType;
    const platform::MetadataObject code{.type = qr, .text = R"({"code":"A"})"};
    const platform::MetadataObject face{};
    const platform::MetadataObject unread{.type = qr, .text = {}};

    struct Row {
        std::vector<platform::MetadataObject> objects;
        test::Texts heard;
        bool stops;
    };

    for (const auto& row : std::vector<Row>{{{code, face}, {"scanned A"}, true},
                                            {{face, code}, {}, false},
                                            {{unread, code}, {}, false},
                                            {{}, {}, true}}) {
        vibrations = 0;
        const auto screen = pushed<QRCodeScannerVC>();
        EXPECT_TRUE(fake->running);
        EXPECT_EQ(fake->types, (std::vector{qr, ean8, ean13, pdf417}));
        EXPECT_EQ(fake->queue, mainLoop);
        EXPECT_EQ(outlet<platform::PreviewView>(*screen, "qrCodeScannerView")->previewSession(), fake);
        fake->listener.lock()->didOutput(row.objects);
        EXPECT_EQ(ears->heard, row.heard);
        EXPECT_EQ(vibrations, row.heard.empty() ? 0 : 1) << "before the code is told";
        EXPECT_EQ(runsWhenHeard, !row.heard.empty());
        EXPECT_EQ(fake->running, !row.stops);
        runsWhenHeard = false;
    }
}

} // namespace
} // namespace kivo
