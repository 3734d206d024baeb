#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/UserInterfaceStyle.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

class Bundle;

/// A picture by name, in a file. The code that draws the picture decodes the file.
struct Image {
    /// The name in the asset catalogue, and the file with the pixels.
    std::string name;
    std::filesystem::path file;
    /// In points; zero when the catalogue gives no size.
    Size size{};
    /// Whether the picture gives only a shape, which is drawn in the tint colour of its view, or black without a tint.
    bool isTemplate = false;
    /// Whether the picture points along the line, and is drawn mirrored where the language is read from the right.
    bool isDirectional = false;
    /// The file for the dark appearance; empty where it is the same.
    std::filesystem::path darkFile{};

    /// The file with the pixels that `style` shows.
    const std::filesystem::path& fileIn(UserInterfaceStyle style) const {
        return style == UserInterfaceStyle::dark && !darkFile.empty() ? darkFile : file;
    }

    /// The image of that name in the host's asset catalogue, or in the catalogue of `bundle`; null when the catalogue
    /// has no such image.
    KIVO_EXPORT static std::shared_ptr<const Image> named(std::string_view name);
    KIVO_EXPORT static std::shared_ptr<const Image> named(std::string_view name, const Bundle& bundle);
};

} // namespace kivo::platform
