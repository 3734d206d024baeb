#pragma once

#include <kivo/platform/ui/ViewController.hpp>

namespace kivo::ui {

/// Gives every child of the screen the reading size that the person has set on the device. Nothing happens while the
/// screen is in no window.
void overrideChildrenContentSizeCategories(platform::ViewController& screen);

} // namespace kivo::ui
