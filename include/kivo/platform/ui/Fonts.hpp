#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Geometry.hpp>

#include <string_view>

namespace kivo::platform {

/// The typefaces of the machine. `isInstalled` is callable from any thread, `measure` from the main thread.
class KIVO_EXPORT Fonts {
public:
    virtual ~Fonts() = default;

    /// Whether a typeface of that name is installed.
    virtual bool isInstalled(std::string_view name) = 0;

    /// The size of `text` in the typeface `name` (empty: the system's own) at `pointSize`, with its lines broken at
    /// `widthLimit`. Text without characters has no width and the height of one line.
    virtual Size measure(std::string_view text, std::string_view name, double pointSize, double widthLimit) = 0;
};

} // namespace kivo::platform
