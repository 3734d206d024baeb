#pragma once

#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/ui/TextStyled.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo::reader {

/// The looks and the texts of the reader's screens, as the host's resources have them.
class Look {
public:
    /// `resources` may be null, which stands for the defaults.
    explicit Look(std::shared_ptr<const platform::readid::UIResources> resources);

    /// The host's text for `key`, which is the reader's own text.
    std::string text(std::string_view key) const;

    void dressTitle(platform::TextStyled& view) const;
    void dressText(platform::TextStyled& view) const;
    /// A button that stands out, or a plain button.
    void dressButton(platform::TextStyled& view, bool standsOut) const;

private:
    platform::Font font(const std::optional<platform::Font>& own, double size) const;

    std::shared_ptr<const platform::readid::UIResources> resources_;
};

} // namespace kivo::reader
