#include "screens/Look.hpp"

#include <kivo/platform/Services.hpp>

#include <utility>

namespace kivo::reader {
namespace {

using platform::Color;

constexpr auto ownBundle = "com.test.KivoReader";
constexpr double titleToText = 1.65;
constexpr double captionToText = 0.88;

// Where no bundle has the colour.
constexpr auto plainInk = Color::adaptive(Color::black(), Color::white());
constexpr auto plainGround = Color::adaptive(Color::white(), Color::black());
constexpr auto plainLine = Color::adaptive(Color::white(0.4), Color::white(0.6));

void setFont(platform::TextStyled& view, const platform::Font& font) {
    view.setFont(font);
    view.setAdjustsFontForContentSizeCategory(font.isScaled);
}

} // namespace

std::shared_ptr<platform::readid::UIResources> usualResources() {
    auto resources = std::make_shared<platform::readid::UIResources>();
    resources->isDynamicTypeEnabled = true;
    resources->buttonCornerRadius = resources->buttonHeight / 2;
    return resources;
}

Look::Look(std::shared_ptr<const platform::readid::UIResources> resources)
    : resources_{resources ? std::move(resources) : usualResources()}
    , bundle_{platform::services().bundles->withIdentifier(ownBundle)} {
    const auto named = [this](std::string_view name, const Color& last) {
        const auto& custom = resources_->customBundle;
        auto found = custom ? custom->color(name) : std::nullopt;
        if (!found) {
            found = Color::named(name);
        }
        if (!found && bundle_) {
            found = bundle_->color(name);
        }
        return found.value_or(last);
    };
    colors_ = std::make_shared<const ScreenColors>(ScreenColors{
        .background = named("Kivo.Background", plainGround),
        .surface = named("Kivo.Surface", plainGround),
        .tint = named("Kivo.AccentTint", plainGround),
        .text = named("Kivo.black", plainInk),
        .title = named("Kivo.HeaderTextColor", plainInk),
        .secondaryText = named("Kivo.SecondaryTextColor", plainInk),
        .accent = named("Kivo.PrimaryColor", plainInk),
        .buttonGround = named("Kivo.Button.BackgroundColor", Color::white(0.25)),
        .separator = named("Kivo.Separator", plainLine),
        .border = named("Kivo.TextFieled.BorderColor", plainLine),
        .error = named("Kivo.ErrorColor", plainInk),
        .success = named("Kivo.SuccessColor", plainInk),
    });
}

std::string Look::text(ScreenText text) const {
    const auto key = text.key();
    if (key.empty()) {
        return {};
    }
    if (resources_->customBundle && resources_->customStringTableName) {
        if (auto own = resources_->customBundle->localizedString(key, *resources_->customStringTableName); own != key) {
            return own;
        }
    }
    return bundle_ ? bundle_->localizedString(key) : std::string{key};
}

std::string Look::text(ScreenText text, std::string_view value) const {
    auto shown = this->text(text);
    if (const auto place = shown.find('#'); place != std::string::npos) {
        shown.replace(place, 1, value);
    }
    return shown;
}

std::shared_ptr<const platform::Image> Look::image(std::string_view name) const {
    const auto& custom = resources_->customBundle;
    auto found = custom ? custom->image(name) : nullptr;
    return found || !bundle_ ? found : bundle_->image(name);
}

void Look::dressTitle(platform::TextStyled& view) const {
    setFont(view, font(resources_->titleFont, resources_->textSize * titleToText));
    view.setTextColor(colors_->title);
}

void Look::dressText(platform::TextStyled& view) const {
    setFont(view, font(resources_->textFont, resources_->textSize));
    view.setTextColor(colors_->text);
}

void Look::dressCaption(platform::TextStyled& view) const {
    auto small = font(resources_->textFont, resources_->textSize);
    small.pointSize *= captionToText;
    setFont(view, small);
    view.setTextColor(colors_->secondaryText);
}

void Look::dressButton(platform::TextStyled& view, bool standsOut) const {
    setFont(view, font(resources_->buttonFont, resources_->buttonTextSize));
    view.setPlacement({.minimumHeight = resources_->buttonHeight});
    view.setTextColor(standsOut ? Color::white() : colors_->accent);
    view.setBackgroundColor(standsOut ? colors_->buttonGround : colors_->background);
    view.changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = resources_->buttonCornerRadius;
        layer.masksToBounds = true;
        layer.borderWidth = standsOut ? 0 : 1;
        layer.borderColor = colors_->accent;
    });
}

void Look::dressCard(platform::View& view) const {
    view.setBackgroundColor(colors_->surface);
    view.changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = 14;
        layer.borderWidth = 1;
        layer.borderColor = colors_->separator;
    });
}

platform::Font Look::font(const std::optional<platform::Font>& own, double size) const {
    auto chosen = own.value_or(platform::Font::system(size));
    chosen.isScaled = resources_->isDynamicTypeEnabled;
    return chosen;
}

} // namespace kivo::reader
