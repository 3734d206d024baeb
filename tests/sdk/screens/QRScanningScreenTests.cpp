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
    pushed<QRCodeScannerVC>();
    EXPECT_EQ(scanned("no JSON"), "invalid");
    camera->showNothing();
    advance(2999ms);
    EXPECT_FALSE(camera->isOn());
    advance(1ms);
    EXPECT_TRUE(camera->isOn());
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

TEST_F(QRScanningScreen, StaysBlackWithoutACamera) {
    using enum simulator::Camera::Refusal;
    for (const auto refusal : {none, opening, input, output}) {
        camera->setConnected(refusal != none);
        camera->setRefusal(refusal);
        const auto screen = pushed<QRCodeScannerVC>();
        EXPECT_FALSE(camera->isOn());
        const auto session = outlet<QRScannerView>(*screen, "qrCodeScannerView")->captureSession;
        EXPECT_EQ(session != nullptr, refusal == none || refusal == opening);
        EXPECT_FALSE(outlet<platform::PreviewView>(*screen, "qrCodeScannerView")->previewSession());
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

} // namespace
} // namespace kivo
