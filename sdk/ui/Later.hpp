#pragma once

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <memory>
#include <utility>

namespace kivo::ui {

/// Runs `step` with the screen on the main queue after `delay`, unless the screen has gone by then. Any thread.
template <class Screen, class Step>
void later(std::chrono::nanoseconds delay, const std::weak_ptr<Screen>& screen, Step step) {
    platform::services().mainQueue->asyncAfter(delay, [screen, step = std::move(step)] {
        if (const auto self = screen.lock()) {
            step(*self);
        }
    });
}

} // namespace kivo::ui
