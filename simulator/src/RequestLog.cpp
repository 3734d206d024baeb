#include "RequestLog.hpp"

#include <utility>

namespace kivo::simulator {

void RequestLog::add(RecordedRequest request) {
    const auto record = std::make_shared<const RecordedRequest>(std::move(request));
    std::function<void(const RecordedRequest&)> listener;
    {
        const std::scoped_lock lock{mutex_};
        ++count_;
        requests_.push_back(record);
        if (requests_.size() > most_) {
            requests_.pop_front();
        }
        listener = requestListener_;
    }
    added_.notify_all();
    if (listener) {
        listener(*record);
    }
}

void RequestLog::add(StrayRequest request) {
    std::function<void(const StrayRequest&)> listener;
    {
        const std::scoped_lock lock{mutex_};
        strays_.push_back("a request went to the unknown path \"" + request.path + "\"");
        if (strays_.size() > most_) {
            strays_.pop_front();
        }
        listener = strayListener_;
    }
    if (listener) {
        listener(request);
    }
}

std::vector<RecordedRequest> RequestLog::requests() const {
    const std::scoped_lock lock{mutex_};
    std::vector<RecordedRequest> all;
    all.reserve(requests_.size());
    for (const auto& request : requests_) {
        all.push_back(*request);
    }
    return all;
}

std::vector<std::string> RequestLog::violations() const {
    const std::scoped_lock lock{mutex_};
    std::vector<std::string> all{strays_.begin(), strays_.end()};
    for (const auto& request : requests_) {
        if (request->violation) {
            all.push_back(*request->violation);
        }
    }
    return all;
}

bool RequestLog::wait(std::size_t count, std::chrono::milliseconds limit) const {
    std::unique_lock lock{mutex_};
    return added_.wait_for(lock, limit, [&] { return count_ >= count; });
}

void RequestLog::onRequest(std::function<void(const RecordedRequest&)> listener) {
    const std::scoped_lock lock{mutex_};
    requestListener_ = std::move(listener);
}

void RequestLog::onStray(std::function<void(const StrayRequest&)> listener) {
    const std::scoped_lock lock{mutex_};
    strayListener_ = std::move(listener);
}

} // namespace kivo::simulator
