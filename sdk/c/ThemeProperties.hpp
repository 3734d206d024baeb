#pragma once

#include <kivo/ThemeCustomization.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace kivo::c {

/// Where the value of a property lies.
using Place = std::variant<std::string*, std::optional<std::string>*, bool*, int*, double*, std::optional<double>*,
                           CodeTextFieldStyle*, platform::ContentSizeCategory*, platform::Color*,
                           std::optional<platform::Color>*, platform::Font*, std::optional<platform::Font>*>;

struct ThemeProperty {
    std::string_view name;
    Place (*placeIn)(ThemeCustomization& theme);
};

/// All properties that a host in C can set, in the order of the headers.
std::span<const ThemeProperty> themeProperties();

} // namespace kivo::c
