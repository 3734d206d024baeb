#pragma once

#include <kivo/platform/ui/ViewController.hpp>

namespace kivo::ui {

/// Gives every child of the screen the reading size that the person has set on the device. Works from `viewWillAppear`
/// on; nothing happens while the screen belongs to no window.
void overrideChildrenContentSizeCategories(platform::ViewController& screen);

} // namespace kivo::ui
