#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Geometry.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

class Bundle;

/// A picture by name, in a file that whoever draws it decodes.
struct Image {
    std::string name;
    std::filesystem::path file;
    /// In points; zero where the catalogue does not tell.
    Size size{};

    /// The image of that name in the host's asset catalogue, or in the one of `bundle`; null when there is none.
    KIVO_EXPORT static std::shared_ptr<const Image> named(std::string_view name);
    KIVO_EXPORT static std::shared_ptr<const Image> named(std::string_view name, const Bundle& bundle);
};

} // namespace kivo::platform
