#pragma once

#include <kivo/platform/ui/Fonts.hpp>

#include <memory>

namespace kivo::device {

/// The fonts service that measures texts as this library draws them. Put it into `platform::Services::fonts` before the
/// first screen is laid out, or texts may be drawn larger than the room that the layout gave them.
///
/// Needs Qt's application object, which a Qt host has and `Pictures` makes. Main thread.
KIVO_EXPORT std::shared_ptr<platform::Fonts> fonts();

} // namespace kivo::device
