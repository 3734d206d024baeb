#pragma once

#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace kivo::test {

/// A machine with chosen typefaces, in all of which every character is half as wide as it is high.
class ChosenFonts final : public platform::Fonts {
public:
    bool isInstalled(std::string_view name) override { return installed.contains(std::string{name}); }

    platform::Size measure(std::string_view text, std::string_view name, double pointSize, double widthLimit) override;

    std::set<std::string> installed;
};

/// A host application that shows screens: a window with a navigation controller, the SDK's own storyboard, a main
/// bundle that the test fills, and time that stands still.
class HostScreenFixture : public ::testing::Test {
protected:
    /// The SDK's resources, or the folder "Sdk.bundle" that the test fills.
    enum class SdkBundle { shipped, ofTheTest };

    explicit HostScreenFixture(SdkBundle sdkBundle = SdkBundle::shipped);

    /// Puts a colour into the host's asset catalogue. Colours are read once: name them before the first screen.
    void addColor(const std::string& name, const platform::Color& color) const;

    /// A new screen of the SDK's storyboard, its view still to be loaded.
    template <class Screen>
    static std::shared_ptr<Screen> makeScreen(std::string_view identifier) {
        return std::dynamic_pointer_cast<Screen>(instantiate(identifier));
    }

    void push(const std::shared_ptr<platform::ViewController>& screen);
    void pop();

    /// Taps the navigation bar's "Back".
    void goBack() {
        EXPECT_TRUE(navigation->navigationBar()->find<platform::Button>("backButton")->tap());
        settle();
    }

    /// Runs what waits on the main queue.
    void settle() { mainLoop->drain(); }

    void advance(std::chrono::nanoseconds time) {
        clock->advance(time);
        settle();
    }

    /// Runs the main queue until `done` holds, for what other threads have to do first.
    bool await(const std::function<bool()>& done) { return mainLoop->runUntil(done, std::chrono::seconds{20}); }

    template <class T>
    static std::shared_ptr<T> outlet(platform::ViewController& screen, std::string_view name) {
        auto view = screen.view()->find<T>(name);
        EXPECT_NE(view, nullptr) << name;
        return view;
    }

    TemporaryFolder folder;
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> mainLoop = std::make_shared<platform::RunLoop>(clock);
    std::shared_ptr<simulator::Camera> camera = std::make_shared<simulator::Camera>();
    std::shared_ptr<ChosenFonts> fonts = std::make_shared<ChosenFonts>();
    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation;
    std::shared_ptr<platform::Window> window;

private:
    static std::shared_ptr<platform::ViewController> instantiate(std::string_view identifier);
};

/// A person at the keyboard, which writes into whichever field has it.
class Keys {
public:
    /// "@3" goes to box three, "<" is the delete key, anything else comes in one piece: a keystroke or a paste.
    static void press(platform::ViewController& screen, std::string_view key);

    /// The tag of the field that has the keyboard; 0 when none has.
    static int focus();
};

} // namespace kivo::test
