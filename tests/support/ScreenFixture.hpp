#pragma once

#include "support/RecordedDiagnostics.hpp"

#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <gtest/gtest.h>

#include <memory>

namespace kivo::test {

/// A window on a main loop that runs only when told to, on a clock that stands still.
class ScreenFixture : public testing::Test {
protected:
    ScreenFixture() {
        platform::Services services;
        services.mainQueue = loop_;
        services.diagnostics = diagnostics_;
        platform::install(services);
    }

    /// Runs the main loop until nothing is due.
    void settle() const {
        while (loop_->drain() > 0) {
        }
    }

    std::shared_ptr<platform::ManualClock> clock_ = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> loop_ = std::make_shared<platform::RunLoop>(clock_);
    std::shared_ptr<RecordedDiagnostics> diagnostics_ = std::make_shared<RecordedDiagnostics>();
    std::shared_ptr<platform::Window> window_ = std::make_shared<platform::Window>();
};

} // namespace kivo::test
