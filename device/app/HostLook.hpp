#pragma once

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <memory>
#include <vector>

namespace kivo::device::app {

/// A theme that a host might have.
struct ThemePreset {
    const char* name;
    std::shared_ptr<ThemeCustomization> (*make)();
};

const std::vector<ThemePreset>& themePresets();

/// The bundles of a host with light and dark colours: the named colours of its catalogue, or dark ones instead.
class HostLook final : public platform::Bundles {
public:
    explicit HostLook(const std::shared_ptr<platform::Bundles>& bundles);

    void setDark(bool dark);
    bool isDark() const;

    /// Gives the screen on top the dark background, which no named colour decides on.
    void dress(platform::Window& window) const;

    std::shared_ptr<platform::Bundle> main() override;
    std::shared_ptr<platform::Bundle> withIdentifier(std::string_view identifier) override;

private:
    class MainBundle;

    std::shared_ptr<platform::Bundles> bundles_;
    std::shared_ptr<MainBundle> main_;
};

} // namespace kivo::device::app
