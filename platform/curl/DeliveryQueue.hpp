#pragma once

#include <kivo/platform/DispatchQueue.hpp>

namespace kivo::platform {

/// The callback queue a session brings along. Its thread ends by itself, after the blocks still waiting, when the
/// last reference goes; that may happen on the thread itself.
class DeliveryQueue final : public DispatchQueue {
public:
    DeliveryQueue();
    DeliveryQueue(const DeliveryQueue&) = delete;
    DeliveryQueue& operator=(const DeliveryQueue&) = delete;
    ~DeliveryQueue() override;

    void async(std::function<void()> block) override;

private:
    class State;
    std::shared_ptr<State> state_;
};

} // namespace kivo::platform
