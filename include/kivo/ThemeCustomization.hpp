#pragma once

#include <kivo/Export.hpp>

namespace kivo {

/// The host's theme, handed by reference to every screen. Main thread only.
///
/// This release has no screens yet, so the theme has no properties; its identity is what is kept and passed on.
class KIVO_EXPORT ThemeCustomization {
public:
    virtual ~ThemeCustomization() = default;
};

} // namespace kivo
