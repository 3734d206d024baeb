// Each way to close each screen: the answer, the screens that stay, and the release of the closed screen.
#include "support/VendorScreens.hpp"

#include <functional>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::ViewController;
using test::Keys;
using test::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

class Closing : public test::VendorScreens {
protected:
    using Maker = std::function<std::shared_ptr<ViewController>()>;

    template <class Screen>
    Maker maker() {
        return [this] { return make<Screen>(closableTheme()); };
    }
};

TEST_F(Closing, TakesAScreenAwayAndTellsTheHost) {
    const struct {
        const char* what;
        Maker make;
        const char* button;
        Texts heardAtOnce;
        Texts heard;
    } rows[] = {
        {"activation code", maker<QRCodeVC>(), "closeButton", {"closed"}, {"closed"}},
        {"QR scanner", maker<QRCodeScannerVC>(), "closeButton", {}, {}},
        {"QR scanner, by hand instead", maker<QRCodeScannerVC>(), "scanManuallyButton", {}, {}},
        {"document", maker<AuthMenuVC>(), "closeButton", {}, {"CANCELLED_BY_USER after 100 ms"}},
        {"face scan", maker<LiveNessCheckVC>(), "closeButton", {"CANCELLED_BY_USER"}, {"CANCELLED_BY_USER"}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        auto screen = row.make();
        push(screen);
        EXPECT_TRUE(tap(*screen, row.button));
        EXPECT_EQ(ears->heard, row.heardAtOnce) << "a pop does not wait for the main queue";
        EXPECT_TRUE(isOnTop(host));
        advance(1s);
        EXPECT_EQ(ears->heard, row.heard);
        std::weak_ptr weak = screen;
        screen.reset();
        EXPECT_TRUE(weak.expired());

        screen = row.make();
        host->present(screen, /*animated=*/false);
        settle();
        EXPECT_TRUE(tap(*screen, row.button));
        weak = screen;
        screen.reset();
        EXPECT_THAT(ears->heard, IsEmpty()) << "a dismissal tells when it is complete";
        advance(1s);
        EXPECT_EQ(host->presentedViewController(), nullptr);
        EXPECT_EQ(ears->heard, row.heard);
        EXPECT_TRUE(weak.expired());
    }
    EXPECT_FALSE(camera->isOn());
}

TEST_F(Closing, LeavesAScreenAloneInItsStackWhereItIs) {
    const auto screen = make<LiveNessCheckVC>();
    window->setRootViewController(std::make_shared<platform::NavigationController>(screen));
    settle();
    tap(*screen, "closeButton");
    std::thread{[this] { scanner->initialized(false); }}.join();
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("CANCELLED_BY_USER", "FACETEC_INITIALIZATION_FAILED after 200 ms"));
    EXPECT_EQ(ears->thread, std::this_thread::get_id());
}

TEST_F(Closing, ReleasesTheCodeScreenOnEveryOtherWayOut) {
    const auto theme = makeTheme();
    theme->codeTextFieldStyle = CodeTextFieldStyle::boxed;
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"back", [] {}},
        {"in the middle of a code", [this] { Keys::press(*navigation, "1"); }},
        {"after a visit to the scanner",
         [this] {
             navigation->topViewController()->performSegue("scannerSegueID");
             settle();
             pop();
         }},
        {"when the host takes it away as soon as it has the code",
         [this] {
             ears->onHeard = [this] { navigation->popViewController(/*animated=*/false); };
             Keys::press(*navigation, "123456");
         }},
    };
    for (const auto& [what, leave] : ways) {
        const std::weak_ptr weak = pushed<QRCodeVC>(theme);
        leave();
        navigation->popToViewController(host, /*animated=*/true);
        settle();
        EXPECT_TRUE(weak.expired()) << what;
    }
    // The single field delivers from elsewhere.
    const std::weak_ptr weak = pushed<QRCodeVC>();
    ASSERT_TRUE(navigation->topViewController()->view()->find("activationCodeTextField")->touch());
    Keys::press(*navigation, "123456");
    settle();
    EXPECT_TRUE(weak.expired());
}

TEST_F(Closing, OfTheFinalScreenIsToldATenthOfASecondAfterItBegan) {
    auto screen = presented<FinalStatusVC>();
    ASSERT_TRUE(tap(*screen, "backToHomeButton"));
    screen->dismiss(true);
    settle();
    EXPECT_EQ(bare->presentedViewController(), nullptr);
    const std::weak_ptr weak = screen;
    screen.reset();
    EXPECT_TRUE(weak.expired()) << "the delay does not hold the screen";
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("gone after 100 ms"));

    presented<FinalStatusVC>();
    bare->dismiss(true);
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("gone after 100 ms")) << "also when the host takes the screen away";

    bare->present(std::make_shared<FinalStatusVC>(), /*animated=*/true);
    settle();
    EXPECT_TRUE(bare->presentedViewController()->view()->window()) << "also without a storyboard";
}

using ClosingWithoutALibrary = test::ScreensWithoutVendors;

TEST_F(ClosingWithoutALibrary, IsLeftToThePersonExceptByTheIDScan) {
    join({.documentList = "false"});
    testing::internal::CaptureStdout();
    const auto document = pushed<AuthMenuVC>();
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("READID_INITIALIZATION_FAILED after 200 ms"));
    EXPECT_TRUE(isOnTop(document));

    join();
    const auto chosen = pushed<AuthMenuVC>();
    EXPECT_TRUE(chosen->view()->viewWithTag(2)->touch());
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("READID_INITIALIZATION_FAILED after 100 ms"));
    EXPECT_TRUE(isOnTop(chosen));

    const auto face = pushed<LiveNessCheckVC>();
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("FACETEC_INITIALIZATION_FAILED after 200 ms"));
    EXPECT_TRUE(isOnTop(face));

    pushed<OCRScanInitializeVC>();
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("OCR_SCAN_FAILED after 100 ms"));
    EXPECT_TRUE(isOnTop(face));

    const auto log = testing::internal::GetCapturedStdout();
    EXPECT_THAT(log,
                testing::ContainsRegex("Proceeding with Allowed Documents \n\u274C[^\n]*ReadID failed to initiate"));
    EXPECT_THAT(log, testing::ContainsRegex("\u274C[^\n]*There is no face scan library"));
}

} // namespace
} // namespace kivo
