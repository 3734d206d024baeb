#include "Text.hpp"

#include <kivo/device/Fonts.hpp>

namespace kivo::device {
namespace {

class QtFonts final : public platform::Fonts {
public:
    bool isInstalled(std::string_view name) override { return installedTypeface(toQt(name)).has_value(); }

    platform::Size measure(std::string_view text, std::string_view name, double pointSize, double widthLimit) override {
        return measureText(toQt(text), toQt(platform::Font{.name = std::string{name}, .pointSize = pointSize}),
                           widthLimit);
    }
};

} // namespace

std::shared_ptr<platform::Fonts> fonts() {
    return std::make_shared<QtFonts>();
}

} // namespace kivo::device
