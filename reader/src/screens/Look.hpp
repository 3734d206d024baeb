#pragma once

#include "screens/ScreenText.hpp"

#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/TextStyled.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo::reader {

/// The resources that the reader starts from: the defaults of `UIResources`, with texts that follow the reading size
/// and the buttons of the SDK's screens.
std::shared_ptr<platform::readid::UIResources> usualResources();

/// The colours of the screens, each light and dark.
struct ScreenColors {
    platform::Color background;
    /// Behind fields and groups of values.
    platform::Color surface;
    platform::Color tint;
    platform::Color text;
    platform::Color title;
    platform::Color secondaryText;
    /// Buttons without a ground of their own, and icons.
    platform::Color accent;
    platform::Color buttonGround;
    platform::Color separator;
    platform::Color border;
    platform::Color error;
    platform::Color success;
};

/// The looks and the texts of the reader's screens: those of the host's resources, else the reader's own bundle.
class Look {
public:
    /// `resources` may be null, which stands for `usualResources()`.
    explicit Look(std::shared_ptr<const platform::readid::UIResources> resources);

    /// The text in the host's table, else in the reader's table of the person's language, else as it is. Empty for no
    /// text.
    std::string text(ScreenText text) const;
    /// The same with `value` in place of the sign "#".
    std::string text(ScreenText text, std::string_view value) const;

    /// The colours of the names "Kivo.Background" and so on, of which a host's catalogue may have its own.
    const ScreenColors& colors() const { return *colors_; }

    /// A picture of that name, which the host's bundle may have too; null where neither has the picture.
    std::shared_ptr<const platform::Image> image(std::string_view name) const;

    void dressTitle(platform::TextStyled& view) const;
    void dressText(platform::TextStyled& view) const;
    /// A text that names or explains another.
    void dressCaption(platform::TextStyled& view) const;
    /// A button that stands out, or a plain button.
    void dressButton(platform::TextStyled& view, bool standsOut) const;
    /// The ground of a group of values.
    void dressCard(platform::View& view) const;

private:
    platform::Font font(const std::optional<platform::Font>& own, double size) const;

    std::shared_ptr<const platform::readid::UIResources> resources_;
    /// The reader's own bundle; null where it is not installed.
    std::shared_ptr<const platform::Bundle> bundle_;
    std::shared_ptr<const ScreenColors> colors_;
};

} // namespace kivo::reader
