#include "platform/c/Arguments.hpp"

#include <kivo/c/services.h>
#include <kivo/platform/MainQueue.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace {

using namespace kivo;

using Block = std::function<void()>;

void runAndDelete(void* argument) {
    const std::unique_ptr<Block> block{static_cast<Block*>(argument)};
    (*block)();
}

class HostMainQueue final : public platform::MainQueue {
public:
    explicit HostMainQueue(const kivo_main_queue& queue)
        : queue_{queue} {}

    void async(Block block) override { asyncAfter(std::chrono::nanoseconds{0}, std::move(block)); }

    void asyncAfter(std::chrono::nanoseconds delay, Block block) override {
        const auto count = std::max(delay.count(), std::chrono::nanoseconds::rep{0});
        auto owned = std::make_unique<Block>(std::move(block));
        queue_.post(queue_.user, static_cast<std::uint64_t>(count), runAndDelete, owned.release());
    }

    bool isCurrent() const override { return queue_.is_current(queue_.user); }

private:
    kivo_main_queue queue_;
};

} // namespace

extern "C" kivo_status kivo_main_queue_install(const kivo_main_queue* queue) {
    return c::statusOf(__func__, [&] {
        const auto given = c::structureOf(queue, "queue");
        c::notNull(given.post, "post");
        c::notNull(given.is_current, "is_current");
        platform::Services services;
        services.mainQueue = std::make_shared<HostMainQueue>(given);
        platform::install(services);
    });
}
