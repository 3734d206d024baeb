#include "platform/base/CodeLocation.hpp"
#include "platform/bundle/FolderBundles.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <system_error>
#include <utility>

/// Where the bundles lie: the host's, the SDK's, and those of other libraries.
namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

/// The folders `*.bundle` beside `bundle`, in the order of their names.
std::vector<fs::path> bundlesBeside(const fs::path& bundle) {
    constexpr std::size_t mostEntries = 1000;
    std::vector<fs::path> found;
    std::error_code error;
    std::size_t entries = 0;
    for (fs::directory_iterator each{bundle.parent_path(), error}; !error && each != fs::directory_iterator{};
         each.increment(error)) {
        if (++entries > mostEntries) {
            break;
        }
        if (each->path().extension() == ".bundle" && each->path().filename() != bundle.filename()) {
            found.push_back(each->path());
        }
    }
    std::ranges::sort(found);
    return found;
}

class FolderBundles final : public Bundles {
public:
    using Open = std::function<std::shared_ptr<Bundle>(fs::path)>;

    /// `open` makes the bundle of a library whose folder lies beside `sdkFolder`.
    FolderBundles(std::shared_ptr<Bundle> main, std::shared_ptr<Bundle> sdk, fs::path sdkFolder, Open open)
        : main_{std::move(main)}
        , sdk_{std::move(sdk)}
        , sdkFolder_{std::move(sdkFolder)}
        , open_{std::move(open)} {}

    std::shared_ptr<Bundle> main() override { return main_; }

    std::shared_ptr<Bundle> withIdentifier(std::string_view identifier) override {
        for (const auto& bundle : {main_, sdk_}) {
            if (bundle->bundleIdentifier() == identifier) {
                return bundle;
            }
        }
        std::call_once(othersFound_, [this] {
            std::ranges::transform(bundlesBeside(sdkFolder_), std::back_inserter(others_), open_);
        });
        const auto found =
            std::ranges::find_if(others_, [&](const auto& bundle) { return bundle->bundleIdentifier() == identifier; });
        return found == others_.end() ? nullptr : *found;
    }

private:
    const std::shared_ptr<Bundle> main_;
    const std::shared_ptr<Bundle> sdk_;
    const fs::path sdkFolder_;
    const Open open_;
    std::once_flag othersFound_;
    std::vector<std::shared_ptr<Bundle>> others_;
};

fs::path installedSdkBundle() {
    constexpr auto name = "ZORFramework.bundle";
    constexpr auto installed = "share/kivo-" KIVO_SOVERSION; // each release has its own
    const auto library = libraryFile().parent_path();
    const auto program = executableFile().parent_path();
    const std::array places{library / name, library.parent_path() / installed / name,
                            library.parent_path().parent_path() / installed / name,
                            program.parent_path() / "lib" / name, program.parent_path() / installed / name};
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
                                           std::shared_ptr<Diagnostics> diagnostics, std::string_view language) {
    if (mainBundle.empty()) {
        mainBundle = executableFile() += ".bundle";
        if (mainBundle == ".bundle") {
            // No file exists below a file. A folder of the working directory must not pass for the host's bundle.
            mainBundle = "/dev/null/main.bundle";
            diagnostics->report("bundles",
                                "The system does not tell where the program lies, so the program's bundle cannot "
                                "be found; name the main bundle in the options of the platform's services "
                                "(or mount /proc, on Linux).");
        }
    }
    if (sdkBundle.empty()) {
        sdkBundle = installedSdkBundle();
    }
    const auto languages = language.empty() ? personLanguages() : languageFolders(language);
    using enum FolderBundle::Presence;
    const auto main = std::make_shared<FolderBundle>(std::move(mainBundle), optional, languages, diagnostics);
    const auto open = [=](fs::path folder) {
        return std::make_shared<FolderBundle>(std::move(folder), expected, languages, diagnostics, main);
    };
    auto sdk = open(sdkBundle);
    return std::make_shared<FolderBundles>(main, std::move(sdk), std::move(sdkBundle), open);
}

} // namespace kivo::platform
