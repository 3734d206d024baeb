#include "platform/linux/FontconfigFonts.hpp"

#include "platform/ui/TextEstimate.hpp"

#include <fontconfig/fontconfig.h>

#include <mutex>
#include <set>
#include <string>

namespace kivo::platform {
namespace {

using Names = std::set<std::string, std::less<>>;

template <auto destroy>
struct Destroy {
    template <class T>
    void operator()(T* object) const {
        destroy(object);
    }
};

void addNames(Names& names, FcPattern* font) {
    for (const auto* property : {FC_FAMILY, FC_FULLNAME, FC_POSTSCRIPT_NAME}) {
        FcChar8* name = nullptr;
        for (int i = 0; FcPatternGetString(font, property, i, &name) == FcResultMatch; ++i) {
            names.emplace(reinterpret_cast<const char*>(name));
        }
    }
}

Names installedNames() {
    Names names;
    const std::unique_ptr<FcConfig, Destroy<FcConfigDestroy>> config{FcInitLoadConfigAndFonts()};
    const std::unique_ptr<FcPattern, Destroy<FcPatternDestroy>> any{FcPatternCreate()};
    const std::unique_ptr<FcObjectSet, Destroy<FcObjectSetDestroy>> properties{
        FcObjectSetBuild(FC_FAMILY, FC_FULLNAME, FC_POSTSCRIPT_NAME, nullptr)};
    const std::unique_ptr<FcFontSet, Destroy<FcFontSetDestroy>> fonts{
        config ? FcFontList(config.get(), any.get(), properties.get()) : nullptr};
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        addNames(names, fonts->fonts[i]);
    }
    return names;
}

class FontconfigFonts final : public Fonts {
public:
    bool isInstalled(std::string_view name) override {
        std::call_once(namesRead_, [this] { names_ = installedNames(); });
        return names_.contains(name);
    }

    Size measure(std::string_view text, std::string_view /*name*/, double pointSize, double widthLimit) override {
        return estimateText(text, pointSize, widthLimit);
    }

private:
    std::once_flag namesRead_;
    Names names_;
};

} // namespace

std::shared_ptr<Fonts> makeFontconfigFonts() {
    return std::make_shared<FontconfigFonts>();
}

} // namespace kivo::platform
