#pragma once

#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The folders `*.xcassets` of a bundle: `NAME.colorset` and `NAME.imageset`, at any depth.
class AssetCatalogue {
public:
    explicit AssetCatalogue(std::filesystem::path bundle)
        : bundle_{std::move(bundle)} {}

    /// Absent when there is no colour of that name; the error follows the file's name.
    std::expected<std::optional<Color>, std::string> color(std::string_view name) const;

    /// Null when there is no image of that name; the error follows the file's name.
    std::expected<std::shared_ptr<const Image>, std::string> image(std::string_view name) const;

private:
    std::optional<std::filesystem::path> find(std::string_view name, std::string_view kind) const;

    std::filesystem::path bundle_;
};

} // namespace kivo::platform
