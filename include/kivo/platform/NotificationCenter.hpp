#pragma once

#include <kivo/Export.hpp>

#include <any>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kivo::platform {

/// An event, and the object that the event concerns.
struct Notification {
    /// The name, and what comes with it: any value on which sender and observers agree.
    std::string name;
    std::any object;
};

/// Keeps an observer registered. Releasing the observation ends the calls.
class KIVO_EXPORT Observation {
public:
    virtual ~Observation() = default;
};

/// Passes notifications to their observers. Callable from any thread.
class KIVO_EXPORT NotificationCenter {
public:
    /// Called with each notification of the name that it observes.
    using Observer = std::function<void(const Notification&)>;

    /// The centre that the SDK posts to; never destroyed.
    static const std::shared_ptr<NotificationCenter>& defaultCenter();

    /// Calls `observer` for every notification of that name, for as long as the observation is held.
    std::shared_ptr<Observation> addObserver(std::string name, Observer observer);

    /// Calls the observers on this thread, in the order of their registration, and returns.
    void post(const Notification& notification);

private:
    struct Entry;

    std::mutex mutex_;
    std::vector<std::weak_ptr<Entry>> entries_;
};

} // namespace kivo::platform
