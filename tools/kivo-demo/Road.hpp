#pragma once

#include "Album.hpp"
#include "Options.hpp"

#include <kivo/kivo.hpp>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace demo {

/// How one call of the host ended.
struct Step {
    std::string name;
    /// The event's or the code's name; empty when no answer came.
    std::string outcome;
    /// The result's data, or the code's message.
    std::string detail;
    std::string expected;
    std::size_t bytesSent = 0;
    std::chrono::microseconds took{0};
    int answers = 0;
    /// Whether the session is to keep the outcome from the host.
    bool isWithheld = false;
    /// Whether the call was made, and all that belongs to it reached the service.
    bool isWhole = true;

    bool asExpected() const {
        return isWhole && answers == (isWithheld ? 0 : 1) && (isWithheld || expected.empty() || outcome == expected);
    }
};

/// Walks a host's road through one session and hands every step over as it ends. `album` takes pictures of it unless it
/// is null. Returns whether all ended well.
bool walk(const Options& options, kivo::simulator::IdentityService& service, const std::shared_ptr<Album>& album,
          const std::function<void(const Step&)>& report);

} // namespace demo
