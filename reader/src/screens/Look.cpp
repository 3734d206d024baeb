#include "screens/Look.hpp"

#include <utility>

namespace kivo::reader {
namespace {

constexpr double titleToText = 1.5;

void setFont(platform::TextStyled& view, const platform::Font& font) {
    view.setFont(font);
    view.setAdjustsFontForContentSizeCategory(font.isScaled);
}

} // namespace

Look::Look(std::shared_ptr<const platform::readid::UIResources> resources)
    : resources_{resources ? std::move(resources) : std::make_shared<const platform::readid::UIResources>()} {}

std::string Look::text(std::string_view key) const {
    if (!resources_->customBundle || !resources_->customStringTableName) {
        return std::string{key};
    }
    return resources_->customBundle->localizedString(key, *resources_->customStringTableName);
}

void Look::dressTitle(platform::TextStyled& view) const {
    setFont(view, font(resources_->titleFont, resources_->textSize * titleToText));
}

void Look::dressText(platform::TextStyled& view) const {
    setFont(view, font(resources_->textFont, resources_->textSize));
}

void Look::dressButton(platform::TextStyled& view, bool standsOut) const {
    setFont(view, font(resources_->buttonFont, resources_->buttonTextSize));
    view.setPlacement({.minimumHeight = resources_->buttonHeight});
    view.setTextColor(standsOut ? platform::Color::white() : platform::Color::systemBlue());
    view.setBackgroundColor(standsOut ? platform::Color::systemBlue() : platform::Color::white());
    view.changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = resources_->buttonCornerRadius;
        layer.borderWidth = 1;
        layer.borderColor = platform::Color::systemBlue();
    });
}

platform::Font Look::font(const std::optional<platform::Font>& own, double size) const {
    auto chosen = own.value_or(platform::Font::system(size));
    chosen.isScaled = resources_->isDynamicTypeEnabled;
    return chosen;
}

} // namespace kivo::reader
