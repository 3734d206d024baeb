#pragma once

#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

namespace kivo::test {

using namespace std::chrono_literals;

using Texts = std::vector<std::string>;

/// Writes down what a host and the screens' delegates hear, in order, each with its delay if it has one, such as
/// "TIMEOUT after 200 ms".
class HostEars final : public QRCodeVCDelegate,
                       public QRScannerVCDelegate,
                       public AuthMenuVCDelegate,
                       public LivenessCheckVCDelegate,
                       public OCRScanVCDelegate,
                       public FinalStatusVCDelegate {
public:
    explicit HostEars(std::shared_ptr<platform::ManualClock> clock)
        : clock_{std::move(clock)} {}

    Texts heard;
    /// The thread of the last call.
    std::thread::id thread;
    /// What the host does as soon as it hears something.
    std::function<void()> onHeard = [] {};

    /// Forgets what was heard; delays count from now on.
    void restart();

    /// The name of an outcome's event or code.
    static std::string said(const IdvOutcome& outcome);

    IdvCompletion completion() {
        return [this](const IdvOutcome& outcome) { hear(said(outcome)); };
    }

    void activationCodeEntered(std::string code) override { hear("entered " + code); }

    void activationCodeScanned(std::string code) override { hear("scanned " + code); }

    void qrCodeScanned(std::string code) override { hear("scanned " + code); }

    void invalidQRCodeScanned() override { hear("invalid"); }

    void closeButtonPressed() override { hear("closed"); }

    void documentFlowDidComplete(IdvOutcome result) override { hear(said(result)); }

    void ocrFlowDidComplete(IdvOutcome result) override { hear("ID scan " + said(result)); }

    /// Keeps the state of the face step too, as a session does.
    void livenessCheckDidComplete(IdvOutcome result) override;

    void ocrScanDidComplete(IdvOutcome result) override { hear(said(result)); }

    void finalStatusDidDisappear() override { hear("gone"); }

private:
    void hear(const std::string& text);

    std::shared_ptr<platform::ManualClock> clock_;
    platform::Clock::Time start_{0};
};

/// A machine with chosen typefaces, in all of which every character is half as wide as it is high.
class ChosenFonts final : public platform::Fonts {
public:
    bool isInstalled(std::string_view name) override { return installed.contains(std::string{name}); }

    platform::Size measure(std::string_view text, std::string_view name, double pointSize, double widthLimit) override;

    std::set<std::string> installed;
};

/// A screen's identifier in the storyboard.
template <class Screen>
inline constexpr const char* scene = std::is_same_v<Screen, QRCodeVC>              ? "QRCodeVC"
                                     : std::is_same_v<Screen, QRCodeScannerVC>     ? "QRCodeScannerVC"
                                     : std::is_same_v<Screen, AuthMenuVC>          ? "AuthMenuVCID"
                                     : std::is_same_v<Screen, LiveNessCheckVC>     ? "LivenessCheckVCID"
                                     : std::is_same_v<Screen, OCRScanInitializeVC> ? "OCRScanInitializeVC"
                                                                                   : "FinalStatusVC";

/// A host application that shows screens of any kind and hears their delegates: a window with a navigation controller,
/// the SDK's own storyboard, a main bundle that the test fills, no vendor's library, and time that stands still.
class HostScreenFixture : public ::testing::Test {
protected:
    using Theme = std::shared_ptr<ThemeCustomization>;

    /// The SDK's resources, or the folder "Sdk.bundle", whose layout the test brings.
    enum class SdkBundle { shipped, ofTheTest };

    explicit HostScreenFixture(SdkBundle sdkBundle = SdkBundle::shipped);

    /// Puts a colour into the host's asset catalogue. Colours are read once: name them before the first screen.
    void addColor(const std::string& name, const platform::Color& color) const;

    /// Gives the host's bundle the SDK's storyboard, as an installed host has it.
    void addLayout() const;

    static Theme makeTheme() { return std::make_shared<ThemeCustomization>(); }

    /// A theme under which the screens show their close button.
    static Theme closableTheme();

    /// A screen of the SDK's storyboard, its view still to be loaded.
    static std::shared_ptr<platform::ViewController> instantiate(std::string_view identifier);

    /// A screen of that class, heard by `ears`.
    template <class Screen>
    std::shared_ptr<Screen> make(const Theme& theme = nullptr) {
        auto screen = std::dynamic_pointer_cast<Screen>(instantiate(scene<Screen>));
        screen->delegate = ears;
        screen->themeObj = theme;
        ears->restart();
        return screen;
    }

    template <class Screen>
    std::shared_ptr<Screen> pushed(const Theme& theme = nullptr) {
        auto screen = make<Screen>(theme);
        push(screen);
        return screen;
    }

    /// Presented by the window's root, where no navigation stack is.
    template <class Screen>
    std::shared_ptr<Screen> presented(const Theme& theme = nullptr) {
        auto screen = make<Screen>(theme);
        window->setRootViewController(bare);
        bare->present(screen, /*animated=*/false);
        settle();
        return screen;
    }

    void push(const std::shared_ptr<platform::ViewController>& screen);
    void pop();

    /// Covers the screen with another one.
    void cover() { push(std::make_shared<platform::ViewController>()); }

    /// Taps the navigation bar's "Back".
    void goBack();

    /// Runs the main queue until nothing is due.
    void settle() const;

    /// Runs the blocks that are due, then moves the clock on in steps of a millisecond.
    void advance(std::chrono::milliseconds time) const;

    /// Runs the main queue until `done` holds, for what other threads have to do first.
    bool await(const std::function<bool()>& done) { return mainLoop->runUntil(done, 20s); }

    template <class T = platform::View>
    static std::shared_ptr<T> outlet(platform::ViewController& screen, std::string_view name) {
        auto view = screen.view()->find<T>(name);
        EXPECT_NE(view, nullptr) << name;
        return view;
    }

    /// Whether it could be tapped.
    static bool tap(platform::ViewController& screen, std::string_view button) {
        return outlet<platform::Button>(screen, button)->tap();
    }

    bool isOnTop(const std::shared_ptr<platform::ViewController>& screen) const {
        return navigation->topViewController() == screen;
    }

    bool hasOverlay() const { return navigation->view()->viewWithTag(999) != nullptr; }

    /// The alert that a person sees, or null.
    std::shared_ptr<platform::AlertController> alert() const {
        return std::dynamic_pointer_cast<platform::AlertController>(window->visibleViewController());
    }

    TemporaryFolder folder;
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> mainLoop = std::make_shared<platform::RunLoop>(clock);
    std::shared_ptr<simulator::Camera> camera = std::make_shared<simulator::Camera>();
    std::shared_ptr<ChosenFonts> fonts = std::make_shared<ChosenFonts>();
    std::shared_ptr<HostEars> ears = std::make_shared<HostEars>(clock);
    /// The root of the navigation stack.
    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    /// A root without a navigation stack.
    std::shared_ptr<platform::ViewController> bare = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation;
    std::shared_ptr<platform::Window> window;
};

/// A person at the keyboard, which writes into whichever field has it.
class Keys {
public:
    /// "@3" goes to box three, "<" is the delete key, anything else comes in one piece: a keystroke or a paste.
    static void press(platform::ViewController& screen, std::string_view key);

    /// Presses keys one after the other, written with bars between them: "1|2|@1|9".
    static void pressAll(platform::ViewController& screen, std::string_view keys);

    /// The texts of several fields in the same way: "9|2||".
    static std::string barred(const Texts& texts);

    /// The tag of the field that has the keyboard; 0 when none has.
    static int focus();
};

} // namespace kivo::test
