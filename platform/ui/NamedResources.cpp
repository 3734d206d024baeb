#include "platform/ui/storyboard/Classes.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>

namespace kivo::platform {

std::optional<Color> Color::named(std::string_view name) {
    return services().bundles->main()->color(name);
}

std::shared_ptr<const Image> Image::named(std::string_view name) {
    return named(name, *services().bundles->main());
}

std::shared_ptr<const Image> Image::named(std::string_view name, const Bundle& bundle) {
    return bundle.image(name);
}

std::string localizedText(std::string_view text) {
    auto own = services().bundles->main()->localizedString(text);
    const auto library = own == text ? storyboard::libraryBundle() : nullptr;
    return library ? library->localizedString(text) : own;
}

std::string textLanguage() {
    auto language = services().bundles->main()->language();
    const auto library = language.empty() ? storyboard::libraryBundle() : nullptr;
    return library ? library->language() : language;
}

std::optional<Font> Font::named(std::string_view name, double pointSize) {
    if (!services().fonts->isInstalled(name)) {
        return std::nullopt;
    }
    return Font{.name = std::string{name}, .pointSize = pointSize, .isScaled = false};
}

} // namespace kivo::platform
