#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>

namespace kivo::reader {

/// A thread for calls that nobody else bounds in time. A call that takes too long is given up: the thread ends by
/// itself when the call returns.
class BoundedCalls {
public:
    /// What the call returns; absent where it has not returned in time.
    template <class Result>
    std::optional<Result> run(std::chrono::milliseconds patience, std::function<Result()> call) {
        auto promise = std::make_shared<std::promise<Result>>();
        auto result = promise->get_future();
        queue_->async([queue = queue_, promise, call = std::move(call)] { promise->set_value(call()); });
        if (result.wait_for(patience) != std::future_status::ready) {
            return std::nullopt;
        }
        return result.get();
    }

private:
    std::shared_ptr<platform::SerialQueue> queue_ = std::make_shared<platform::SerialQueue>("kivo.card");
};

} // namespace kivo::reader
