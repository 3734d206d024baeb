#pragma once

#include "platform/bundle/AssetCatalogue.hpp"
#include "platform/bundle/StringsFile.hpp"

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/Diagnostics.hpp>

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// A bundle in a folder. The information dictionary and every table are read once, a property list at every call.
class FolderBundle final : public Bundle {
public:
    /// Whether a missing folder is reported.
    enum class Presence { optional, expected };

    /// `languages` holds the person's languages as names of folders, the preferred language first. Where `host` has
    /// texts, its language takes their place: a host that speaks one language is not to get screens in another.
    FolderBundle(std::filesystem::path folder, Presence presence, std::vector<std::string> languages,
                 std::shared_ptr<Diagnostics> diagnostics, std::shared_ptr<const FolderBundle> host = nullptr);

    std::optional<std::string> bundleIdentifier() const override;
    std::optional<std::string> infoText(std::string_view key) const override;
    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const override;
    std::optional<PropertyValue> propertyList(std::string_view name) const override;
    std::string localizedString(std::string_view key, std::string_view table) const override;
    std::string language() const override;
    std::optional<Color> color(std::string_view name) const override;
    std::shared_ptr<const Image> image(std::string_view name) const override;

private:
    struct Contents {
        PropertyValue::Dictionary info;
        std::vector<std::string> languages;
        std::string language;
        std::string problem;
    };

    const Contents& contents() const;
    Contents readContents() const;
    StringTable readTable(std::string_view name, std::vector<std::string>& problems) const;
    void reportOnce(const std::string& problem) const;

    std::filesystem::path folder_;
    AssetCatalogue catalogue_;
    Presence presence_;
    std::vector<std::string> personLanguages_;
    std::shared_ptr<Diagnostics> diagnostics_;
    std::shared_ptr<const FolderBundle> host_;

    mutable std::once_flag contentsRead_;
    mutable Contents contents_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, StringTable, std::less<>> tables_;
    mutable std::set<std::string> reported_;
};

/// The possible names of a language's folder, the most exact name first: de_DE.UTF-8 gives de_DE, de-DE and de. Empty
/// for a locale without a language, such as C.
std::vector<std::string> languageFolders(std::string_view locale);

/// Bundles that are folders: `Info.plist` and the resources, and `<language>.lproj` folders with translated ones.
///
/// The language is `language` or, where that is empty, that of `LC_ALL`, `LC_MESSAGES` or `LANG` at the time of this
/// call; then the bundle's `CFBundleDevelopmentRegion`, then en, then Base. An empty `mainBundle` stands for
/// `<executable>.bundle` beside the executable, an empty `sdkBundle` for the `ZORFramework.bundle` installed or built
/// with the library. A missing main bundle counts as an empty bundle. The bundles of other libraries, such as the
/// document reader's, are found by their identifiers beside `sdkBundle`. Everything unreadable is left out and reported
/// to `diagnostics` once.
std::shared_ptr<Bundles> makeFolderBundles(std::filesystem::path mainBundle, std::filesystem::path sdkBundle,
                                           std::shared_ptr<Diagnostics> diagnostics, std::string_view language = {});

} // namespace kivo::platform
