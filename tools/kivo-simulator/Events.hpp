#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace simulation {

/// The latest events, for any number of listeners: each listener keeps its own place, and one that reads too slowly
/// loses events, not the program its memory. Callable from any thread.
class Events {
public:
    /// The events that are kept. A listener further behind gets `lost`.
    static constexpr std::size_t most = 1000;

    /// `data` is JSON on one line.
    void publish(std::string_view name, std::shared_ptr<const std::string> data);

    /// The number of the last event.
    std::uint64_t last() const;

    /// The event after the one with the number `seen`, as text of an event stream; `seen` becomes its number. Waits for
    /// the event. Empty when `limit` passes first; absent after `stop`.
    std::optional<std::string> next(std::uint64_t& seen, std::chrono::milliseconds limit) const;

    /// Ends every wait from now on.
    void stop();

private:
    struct Event {
        std::string_view name;
        std::shared_ptr<const std::string> data;
    };

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::deque<Event> events_;
    std::uint64_t last_ = 0;
    bool isOver_ = false;
};

} // namespace simulation
