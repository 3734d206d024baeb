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

/// The outcome of one call of the host.
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
    /// Whether the session must keep the outcome from the host.
    bool isWithheld = false;
    /// Whether the call was made, and all of its requests reached the service.
    bool isWhole = true;

    bool asExpected() const {
        return isWhole && answers == (isWithheld ? 0 : 1) && (isWithheld || expected.empty() || outcome == expected);
    }
};

/// Walks a host's road through one session, and calls `report` after every step. `service` is the demo's own
/// simulated service, which counts the requests; null when the requests go to a service elsewhere. `album` takes
/// pictures of the screens; may be null. Returns whether every step ended as expected.
bool walk(const Options& options, kivo::simulator::IdentityService* service, const std::shared_ptr<Album>& album,
          const std::function<void(const Step&)>& report);

} // namespace demo
