#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kivo::ui {

/// Asks a person over the screen, with one button for each of `actions`. `handler` hears the index of the chosen one,
/// once.
void showAlert(platform::ViewController& screen, std::string title, std::string message,
               const std::vector<std::string>& actions, const std::function<void(std::size_t)>& handler);

} // namespace kivo::ui
