#include "support/HostScreenFixture.hpp"

#include "Configuration/environment/SdkBundle.hpp"
#include "platform/bundle/FolderBundles.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"

#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/Text.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>

namespace kivo::test {

void HostEars::restart() {
    heard.clear();
    start_ = clock_->now();
}

std::string HostEars::said(const IdvOutcome& outcome) {
    return std::string{outcome ? IdvEventsHelper::eventName((*outcome)->responseType()) : name(outcome.error())};
}

void HostEars::livenessCheckDidComplete(IdvOutcome result) {
    using enum FaceAuthStatus;
    UIStateManager::shared().faceAuthState = result ? faceAuthSuccess : faceAuthFailedOrInitialized;
    hear(said(result));
}

void HostEars::hear(const std::string& text) {
    thread = std::this_thread::get_id();
    const auto delay = (clock_->now() - start_) / 1ms;
    heard.push_back(delay > 0 ? text + " after " + std::to_string(delay) + " ms" : text);
    onHeard();
}

platform::Size ChosenFonts::measure(std::string_view text, std::string_view /*name*/, double pointSize,
                                    double widthLimit) {
    const double width = static_cast<double>(text.size()) * pointSize / 2;
    const double lines = widthLimit > 0 ? std::max(1.0, std::ceil(width / widthLimit)) : 1;
    return {.width = std::min(width, widthLimit), .height = lines * pointSize * 1.2};
}

HostScreenFixture::HostScreenFixture(SdkBundle sdkBundle) {
    auto services = platform::linuxServices(
        {.mainBundle = folder.path() / "Host.bundle", .dataFolder = folder.path() / "data", .trustedCertificates = {}});
    services.mainQueue = mainLoop;
    services.fonts = fonts;
    services.camera = camera;
    if (sdkBundle == SdkBundle::ofTheTest) {
        folder.write("Sdk.bundle/Info.plist", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleIdentifier</key><string>com.test.ZORFramework</string></dict></plist>)");
        services.bundles = platform::makeFolderBundles(folder.path() / "Host.bundle", folder.path() / "Sdk.bundle",
                                                       services.diagnostics);
    }
    platform::install(services);
    navigation = std::make_shared<platform::NavigationController>(host);
    window = std::make_shared<platform::Window>();
    window->setRootViewController(navigation);
    settle();
}

void HostScreenFixture::addColor(const std::string& name, const platform::Color& color) const {
    const auto component = [](double value) { return '"' + std::to_string(value) + '"'; };
    folder.write("Host.bundle/Host.xcassets/" + name + ".colorset/Contents.json",
                 R"({"colors":[{"idiom":"universal","color":{"color-space":"srgb","components":{"red":)" +
                     component(color.red) + R"(,"green":)" + component(color.green) + R"(,"blue":)" +
                     component(color.blue) + R"(,"alpha":)" + component(color.alpha) + "}}}]}");
}

void HostScreenFixture::addLayout() const {
    std::filesystem::create_directory(folder.path() / "Host.bundle");
    std::filesystem::copy(*kivo::sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                          folder.path() / "Host.bundle");
}

HostScreenFixture::Theme HostScreenFixture::closableTheme() {
    auto theme = makeTheme();
    theme->zorCloseButtonAppearance->closeButtonIsHidden = false;
    return theme;
}

std::shared_ptr<platform::ViewController> HostScreenFixture::instantiate(std::string_view identifier) {
    const auto storyboard = platform::Storyboard::open("ZORFramework", sdkBundle());
    if (!storyboard) {
        ADD_FAILURE() << storyboard.error();
        return nullptr;
    }
    auto screen = (*storyboard)->instantiate(identifier);
    if (!screen) {
        ADD_FAILURE() << screen.error();
        return nullptr;
    }
    return std::move(*screen);
}

void HostScreenFixture::push(const std::shared_ptr<platform::ViewController>& screen) {
    navigation->pushViewController(screen, /*animated=*/true);
    settle();
}

void HostScreenFixture::pop() {
    navigation->popViewController(/*animated=*/true);
    settle();
}

void HostScreenFixture::goBack() {
    EXPECT_TRUE(navigation->navigationBar()->find<platform::Button>("backButton")->tap());
    settle();
}

void HostScreenFixture::settle() const {
    while (mainLoop->drain() > 0) {
    }
}

void HostScreenFixture::advance(std::chrono::milliseconds time) const {
    for (settle(); time > 0ms; time -= 1ms) {
        clock->advance(1ms);
        settle();
    }
}

void Keys::press(platform::ViewController& screen, std::string_view key) {
    if (key.starts_with('@')) {
        screen.view()->viewWithTag(std::stoi(std::string{key.substr(1)}))->touch();
        return;
    }
    const auto field = std::dynamic_pointer_cast<platform::TextField>(platform::Keyboard::firstResponder());
    ASSERT_NE(field, nullptr) << "no field has the keyboard for \"" << key << '"';
    if (key == "<") {
        field->deleteBackward();
    } else if (text::characterCount(key) == 1) {
        field->insertText(std::string{key});
    } else {
        field->paste(std::string{key});
    }
}

void Keys::pressAll(platform::ViewController& screen, std::string_view keys) {
    std::istringstream rest{std::string{keys}};
    for (std::string key; std::getline(rest, key, '|');) {
        press(screen, key);
    }
}

std::string Keys::barred(const Texts& texts) {
    std::string all;
    for (const auto& text : texts) {
        all += (&text == texts.data() ? "" : "|") + text;
    }
    return all;
}

int Keys::focus() {
    const auto field = platform::Keyboard::firstResponder();
    return field ? field->tag() : 0;
}

} // namespace kivo::test
