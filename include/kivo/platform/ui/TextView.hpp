#pragma once

#include <kivo/platform/ui/Label.hpp>

namespace kivo::platform {

/// A longer text that a person may scroll but not edit.
class KIVO_EXPORT TextView : public Label {};

} // namespace kivo::platform
