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
    /// Whether a folder that does not exist is worth a diagnostic.
    enum class Presence { optional, expected };

    /// `languages` holds the person's languages as names of folders, the best first.
    FolderBundle(std::filesystem::path folder, Presence presence, std::vector<std::string> languages,
                 std::shared_ptr<Diagnostics> diagnostics);

    std::optional<std::string> bundleIdentifier() const override;
    std::optional<std::string> infoText(std::string_view key) const override;
    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const override;
    std::optional<PropertyValue> propertyList(std::string_view name) const override;
    std::string localizedString(std::string_view key, std::string_view table) const override;
    std::optional<Color> color(std::string_view name) const override;
    std::shared_ptr<const Image> image(std::string_view name) const override;

private:
    struct Contents {
        PropertyValue::Dictionary info;
        std::vector<std::string> languages;
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

    mutable std::once_flag contentsRead_;
    mutable Contents contents_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, StringTable, std::less<>> tables_;
    mutable std::set<std::string> reported_;
};

/// The names under which a language's folder may go, the most exact first: de_DE.UTF-8 gives de_DE, de-DE and de.
/// Empty for a name that is no language, such as C.
std::vector<std::string> languageFolders(std::string_view locale);

} // namespace kivo::platform
