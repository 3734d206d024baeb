#pragma once

#include "Host.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::device::app {

/// A theme that a host might have.
struct ThemePreset {
    const char* name;
    std::shared_ptr<ThemeCustomization> (*make)(bool isDark);
};

const std::vector<ThemePreset>& themePresets();

/// The bundles of a host with light and dark colours: the named colours of its catalogue, or dark ones instead.
class HostLook final : public platform::Bundles {
public:
    explicit HostLook(std::shared_ptr<platform::Bundles> bundles)
        : bundles_{std::move(bundles)} {}

    void setDark(bool dark) { *isDark_ = dark; }

    bool isDark() const { return *isDark_; }

    /// The colours of the host's own screen. The tint is the one that the SDK's screens give the navigation bar.
    HostColors colors();

    /// Gives the topmost screen the dark background, for which there is no named colour. A vendor's screen, which comes
    /// from no storyboard, keeps its own colours.
    void dress(platform::Window& window) const;

    std::shared_ptr<platform::Bundle> main() override;
    std::shared_ptr<platform::Bundle> withIdentifier(std::string_view identifier) override;

private:
    class ColoredBundle;

    std::shared_ptr<platform::Bundle> colored(const std::shared_ptr<platform::Bundle>& bundle);

    std::shared_ptr<platform::Bundles> bundles_;
    std::shared_ptr<std::atomic<bool>> isDark_ = std::make_shared<std::atomic<bool>>(false);
    /// Every thread may ask for bundles.
    std::mutex mutex_;
    /// The coloured bundles by the bundle that each of them wraps: the host's, and the SDK's with the colours of its
    /// screens.
    std::map<std::shared_ptr<platform::Bundle>, std::shared_ptr<ColoredBundle>> colored_;
};

} // namespace kivo::device::app
