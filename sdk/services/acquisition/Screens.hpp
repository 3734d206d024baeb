#pragma once

namespace kivo {

/// Makes the SDK's screens and views known to storyboards by their class names. Later calls do nothing.
void registerScreens();

} // namespace kivo
