#pragma once

#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The folders `*.xcassets` of a bundle: `NAME.colorset` and `NAME.imageset`, at any depth, each with an entry for
/// every appearance or one more for the dark appearance. The folders are looked through once, and a sound colour is
/// read once. Any thread.
class AssetCatalogue {
public:
    explicit AssetCatalogue(std::filesystem::path bundle)
        : bundle_{std::move(bundle)} {}

    /// Absent when there is no colour of that name. The error names the file.
    std::expected<std::optional<Color>, std::string> color(std::string_view name) const;

    /// Null when there is no image of that name. The error names the file.
    std::expected<std::shared_ptr<const Image>, std::string> image(std::string_view name) const;

private:
    using FoundColor = std::expected<std::optional<Color>, std::string>;

    FoundColor readColorOf(std::string_view name) const;
    std::optional<std::filesystem::path> find(std::string_view name, std::string_view kind) const;
    std::map<std::string, std::filesystem::path, std::less<>> listSets() const;

    std::filesystem::path bundle_;
    mutable std::once_flag listed_;
    /// The sets by the names of their folders.
    mutable std::map<std::string, std::filesystem::path, std::less<>> sets_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::optional<Color>, std::less<>> colors_;
};

} // namespace kivo::platform
