#pragma once

#include <kivo/platform/ui/Fonts.hpp>

#include <memory>

namespace kivo::platform {

/// The fonts that fontconfig knows, read on first use; a name is a family's, a font's full one or its PostScript one.
///
/// `measure` is an estimate that does not look into the fonts, so that a layout is the same on every machine.
std::shared_ptr<Fonts> makeFontconfigFonts();

} // namespace kivo::platform
