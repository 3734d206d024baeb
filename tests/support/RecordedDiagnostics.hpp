#pragma once

#include <kivo/platform/Services.hpp>

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::test {

/// Keeps what the platform layer had to tell, on whatever thread, each with its component before it.
class RecordedDiagnostics final : public platform::Diagnostics {
public:
    void report(std::string_view component, std::string_view text) override {
        const std::scoped_lock lock{mutex_};
        texts_.push_back(std::string{component} + ": " + std::string{text});
    }

    std::vector<std::string> texts() const {
        const std::scoped_lock lock{mutex_};
        return texts_;
    }

    void clear() {
        const std::scoped_lock lock{mutex_};
        texts_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> texts_;
};

} // namespace kivo::test
