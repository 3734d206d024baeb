#include "HostLook.hpp"

#include <map>
#include <string>
#include <utility>

namespace kivo::device::app {
namespace {

using platform::Color;

const Color darkBackground{.red = 0.08, .green = 0.09, .blue = 0.11};

const std::map<std::string, Color, std::less<>> darkColors{
    {"Kivo.black", Color::white(0.93)},
    {"Kivo.HeaderTextColor", {.red = 0.62, .green = 0.79, .blue = 1}},
    {"Kivo.PrimaryColor", {.red = 0.62, .green = 0.79, .blue = 1}},
    {"Kivo.Button.BackgroundColor", {.red = 0.09, .green = 0.42, .blue = 0.75}},
    {"Kivo.TextFieled.BorderColor", Color::white(0.55)},
    {"Kivo.TextFieled.active.BorderColor", {.red = 0.62, .green = 0.79, .blue = 1}},
};

} // namespace

const std::vector<ThemePreset>& themePresets() {
    static const std::vector<ThemePreset> presets{
        {"As it comes", [](bool) { return std::make_shared<ThemeCustomization>(); }},
        {"One field for the code",
         [](bool) {
             auto theme = std::make_shared<ThemeCustomization>();
             theme->codeTextFieldStyle = CodeTextFieldStyle::single;
             return theme;
         }},
        {"Square and green",
         [](bool isDark) {
             auto theme = std::make_shared<ThemeCustomization>();
             const Color green{.red = 0.05, .green = 0.42, .blue = 0.25};
             theme->primaryButtonCornerRadius = 4;
             theme->screenTitleColor = isDark ? Color{.red = 0.45, .green = 0.85, .blue = 0.62} : green;
             theme->codeScreenScanQRButtonBackgroundColor = green;
             theme->qrScanScreenEnterManuallyButtonBackgroundColor = green;
             theme->faceScanIntroNextButtonBackgroundColor = green;
             theme->codeScreenGetStartedTitle = "Welcome";
             return theme;
         }},
        {"Any reading size",
         [](bool) {
             auto theme = std::make_shared<ThemeCustomization>();
             theme->minimumContentSizeCategoryLimit = platform::ContentSizeCategory::extraSmall;
             theme->maximumContentSizeCategoryLimit = platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge;
             return theme;
         }},
    };
    return presets;
}

class HostLook::ColoredBundle final : public platform::Bundle {
public:
    ColoredBundle(std::shared_ptr<platform::Bundle> bundle, std::shared_ptr<const std::atomic<bool>> isDark)
        : bundle_{std::move(bundle)}
        , isDark_{std::move(isDark)} {}

    std::optional<std::string> bundleIdentifier() const override { return bundle_->bundleIdentifier(); }

    std::optional<std::string> infoText(std::string_view key) const override { return bundle_->infoText(key); }

    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const override {
        return bundle_->pathForResource(name, type);
    }

    std::optional<platform::PropertyValue> propertyList(std::string_view name) const override {
        return bundle_->propertyList(name);
    }

    std::string localizedString(std::string_view key, std::string_view table) const override {
        return bundle_->localizedString(key, table);
    }

    std::optional<Color> color(std::string_view name) const override {
        const auto dark = *isDark_ ? darkColors.find(name) : darkColors.end();
        return dark == darkColors.end() ? bundle_->color(name) : dark->second;
    }

    std::shared_ptr<const platform::Image> image(std::string_view name) const override { return bundle_->image(name); }

private:
    std::shared_ptr<platform::Bundle> bundle_;
    std::shared_ptr<const std::atomic<bool>> isDark_;
};

std::shared_ptr<platform::Bundle> HostLook::colored(const std::shared_ptr<platform::Bundle>& bundle) {
    if (!bundle) {
        return nullptr;
    }
    const std::scoped_lock lock{mutex_};
    auto& known = colored_[bundle];
    if (!known) {
        known = std::make_shared<ColoredBundle>(bundle, isDark_);
    }
    return known;
}

void HostLook::dress(platform::Window& window) const {
    const auto screen = window.visibleViewController();
    if (*isDark_ && screen && screen->storyboard() && screen->view()->backgroundColor() == Color::white()) {
        screen->view()->setBackgroundColor(darkBackground);
    }
}

HostColors HostLook::colors() {
    const auto bundle = main();
    const auto named = [&](std::string_view name, const Color& otherwise) {
        return bundle ? bundle->color(name).value_or(otherwise) : otherwise;
    };
    const auto tint = named("Kivo.PrimaryColor", Color::systemBlue());
    if (*isDark_) {
        return {.background = darkBackground,
                .text = Color::white(0.93),
                .button = Color::white(0.17),
                .bar = {.red = 0.12, .green = 0.13, .blue = 0.16},
                .tint = tint};
    }
    return {.background = {.red = 0.95, .green = 0.95, .blue = 0.97},
            .text = Color::black(),
            .button = Color::white(),
            .bar = Color::white(1, 0.92),
            .tint = tint};
}

std::shared_ptr<platform::Bundle> HostLook::main() {
    return colored(bundles_->main());
}

std::shared_ptr<platform::Bundle> HostLook::withIdentifier(std::string_view identifier) {
    return colored(bundles_->withIdentifier(identifier));
}

} // namespace kivo::device::app
