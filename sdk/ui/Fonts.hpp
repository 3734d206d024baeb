#pragma once

#include <kivo/platform/ui/Font.hpp>

#include <string_view>

namespace kivo::ui {

/// The font of that name or, where it is not installed, the system's at the same size.
inline platform::Font namedOrSystemFont(std::string_view name, double pointSize) {
    return platform::Font::named(name, pointSize).value_or(platform::Font::system(pointSize));
}

} // namespace kivo::ui
