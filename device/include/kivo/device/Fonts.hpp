#pragma once

#include <kivo/platform/ui/Fonts.hpp>

#include <memory>

namespace kivo::device {

/// The fonts service that measures texts as this library draws them. Put it into `platform::Services::fonts` before the
/// first screen is laid out, or texts may be drawn larger than the room they were given.
///
/// Needs Qt's application object, as `Pictures` and a Qt host make one. Main thread.
KIVO_EXPORT std::shared_ptr<platform::Fonts> fonts();

} // namespace kivo::device
