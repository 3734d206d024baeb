#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The requests that a service has received, and those who listen. Callable from any thread.
class RequestLog {
public:
    /// `most` is the number of requests to remember.
    explicit RequestLog(std::size_t most)
        : most_{most} {}

    void add(RecordedRequest request);
    void add(StrayRequest request);

    std::vector<RecordedRequest> requests() const;

    /// A sentence for each stray request, then the violations of the others.
    std::vector<std::string> violations() const;

    /// Waits until that many requests to endpoints have been added in all; false when `limit` passes first.
    bool wait(std::size_t count, std::chrono::milliseconds limit) const;

    void onRequest(std::function<void(const RecordedRequest&)> listener);
    void onStray(std::function<void(const StrayRequest&)> listener);

private:
    const std::size_t most_;
    mutable std::mutex mutex_;
    mutable std::condition_variable added_;
    std::deque<std::shared_ptr<const RecordedRequest>> requests_;
    std::deque<std::string> strays_;
    std::size_t count_ = 0;
    std::function<void(const RecordedRequest&)> requestListener_;
    std::function<void(const StrayRequest&)> strayListener_;
};

} // namespace kivo::simulator
