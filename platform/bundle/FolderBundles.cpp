#include "platform/bundle/FolderBundles.hpp"

#include "platform/base/OwnFile.hpp"
#include "platform/bundle/FolderBundle.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

class FolderBundles final : public Bundles {
public:
    FolderBundles(std::shared_ptr<Bundle> main, std::shared_ptr<Bundle> sdk)
        : main_{std::move(main)}
        , sdk_{std::move(sdk)} {}

    std::shared_ptr<Bundle> main() override { return main_; }

    std::shared_ptr<Bundle> withIdentifier(std::string_view identifier) override {
        for (const auto& bundle : {main_, sdk_}) {
            if (bundle->bundleIdentifier() == identifier) {
                return bundle;
            }
        }
        return nullptr;
    }

private:
    std::shared_ptr<Bundle> main_;
    std::shared_ptr<Bundle> sdk_;
};

fs::path installedSdkBundle() {
    constexpr auto name = "ZORFramework.bundle";
    const auto library = ownFile().parent_path();
    const auto program = executable().parent_path();
    const std::array places{library / name, library.parent_path() / "share/kivo" / name,
                            library.parent_path().parent_path() / "share/kivo" / name,
                            program.parent_path() / "lib" / name, program.parent_path() / "share/kivo" / name};
    const auto found = std::ranges::find_if(places, [](const auto& place) {
        std::error_code error;
        return fs::is_directory(place, error);
    });
    return found == places.end() ? places.front() : *found;
}

std::vector<std::string> personLanguages() {
    for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const auto* locale = std::getenv(variable); locale && *locale) {
            return languageFolders(locale);
        }
    }
    return {};
}

} // namespace

std::shared_ptr<Bundles> makeFolderBundles(fs::path mainBundle, fs::path sdkBundle,
                                           std::shared_ptr<Diagnostics> diagnostics) {
    if (mainBundle.empty()) {
        mainBundle = executable() += ".bundle";
        if (mainBundle == ".bundle") {
            // No file exists below a file. A folder of the working directory must not pass for the host's bundle.
            mainBundle = "/dev/null/main.bundle";
            diagnostics->report("bundles", "The system does not say where the program lies, so its bundle cannot be "
                                           "found; mount /proc, or name the bundle in LinuxOptions::mainBundle.");
        }
    }
    if (sdkBundle.empty()) {
        sdkBundle = installedSdkBundle();
    }
    const auto languages = personLanguages();
    using enum FolderBundle::Presence;
    return std::make_shared<FolderBundles>(
        std::make_shared<FolderBundle>(std::move(mainBundle), optional, languages, diagnostics),
        std::make_shared<FolderBundle>(std::move(sdkBundle), expected, languages, diagnostics));
}

} // namespace kivo::platform
