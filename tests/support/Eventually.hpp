#pragma once

#include <chrono>
#include <thread>

namespace kivo::test {

inline constexpr std::chrono::seconds patience{20};

/// Waits, by looking now and then, until `holds` is true; false after a long time.
template <typename Condition>
bool eventually(const Condition& holds) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{2});
    }
    return true;
}

} // namespace kivo::test
