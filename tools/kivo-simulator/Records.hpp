#pragma once

#include "Events.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace simulation {

/// The time in UTC, to the millisecond: "2026-03-01T18:49:01.204Z".
std::string timeText(std::chrono::system_clock::time_point time);

/// What the program tells of the requests: records in JSON, without secrets and bounded, and a notice of each. Callable
/// from any thread.
class Records {
public:
    /// The records that are kept.
    static constexpr std::size_t most = 500;

    using Listener = std::function<void(const nlohmann::ordered_json& record)>;

    /// Tells `events` and `listener` of each record, one at a time. Both outlive the records.
    Records(Events& events, Listener listener)
        : events_{events}
        , listener_{std::move(listener)} {}

    void add(const kivo::simulator::RecordedRequest& request);
    void add(const kivo::simulator::StrayRequest& request);

    /// The newest `limit` records with a number above `after`, oldest first, as a JSON object.
    std::string list(std::uint64_t after = 0, std::size_t limit = most) const;

    /// Forgets the records so far, and returns what `list` tells then.
    std::string forget();

    std::uint64_t count() const;
    std::uint64_t violations() const;

private:
    struct Numbered {
        std::uint64_t number;
        std::shared_ptr<const std::string> text;
    };

    void add(nlohmann::ordered_json record);
    std::string listed(std::uint64_t after, std::size_t limit) const;

    Events& events_;
    const Listener listener_;
    mutable std::mutex mutex_;
    std::deque<Numbered> records_;
    std::uint64_t last_ = 0;
    std::uint64_t violations_ = 0;
};

} // namespace simulation
