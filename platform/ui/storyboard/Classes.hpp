#pragma once

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform::storyboard {

// The classes that storyboards know by name: registered classes, and the view model's own views.

/// Whether a class of screens has this name.
bool isScreenClass(const std::string& name);

/// A new screen; null when there is no such class or its factory makes none.
std::shared_ptr<ViewController> makeScreen(const std::string& name);

/// A new view; null when there is no such class or its factory makes none.
std::shared_ptr<View> makeView(const std::string& name);

/// Whether a class of views was registered under this name, even in the place of the view model's own class.
bool isRegisteredView(const std::string& name);

/// The bundle of the library that stands on the view model; null without one.
std::shared_ptr<Bundle> libraryBundle();

/// The number of registrations so far: a storyboard that was checked before the last registration may be refused after
/// it.
std::size_t registrations();

/// The known classes, for a message.
std::string knownScreens();
std::string knownViews();

} // namespace kivo::platform::storyboard
