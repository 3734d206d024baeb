#include "platform/bundle/FolderBundles.hpp"

#include <kivo/LuOTPView.hpp>
#include <kivo/platform/MainQueue.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

namespace kivo::platform {
namespace {

/// No font is installed, so that a finding does not hang on the machine's fonts.
class NoFonts final : public Fonts {
public:
    bool isInstalled(std::string_view /*name*/) override { return false; }

    Size measure(std::string_view text, std::string_view /*name*/, double pointSize, double /*widthLimit*/) override {
        return {static_cast<double>(text.size()) * pointSize, pointSize};
    }
};

class NoDiagnostics final : public Diagnostics {
public:
    void report(std::string_view /*component*/, std::string_view /*text*/) override {}
};

} // namespace

/// The few services that the readers ask for, in the place of the machine's own.
Services defaultServices() {
    Services services;
    services.diagnostics = std::make_shared<NoDiagnostics>();
    services.bundles = makeFolderBundles("/nonexistent", "/nonexistent", services.diagnostics);
    services.mainQueue = RunLoop::main();
    services.fonts = std::make_shared<NoFonts>();
    return services;
}

/// The view that has members of its own; the SDK's screens would take the whole library along.
StoryboardClasses libraryClasses() {
    return {.views = {{"LuOTPView", [] { return std::make_shared<LuOTPView>(); }},
                      {"LuOTPTextField", [] { return std::make_shared<LuOTPTextField>(); }}}};
}

} // namespace kivo::platform
