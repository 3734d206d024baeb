#include "platform/c/Arguments.hpp"

#include <kivo/c/main_queue.h>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>

#include <chrono>
#include <utility>

using namespace kivo;

extern "C" {

kivo_status kivo_main_run() {
    return c::statusOf(__func__, [] { platform::RunLoop::main()->run(); });
}

bool kivo_main_run_until(bool (*is_done)(void* user), void* user, uint32_t limit_milliseconds) {
    return c::resultOf(__func__, false, [&] {
        c::notNull(is_done, "is_done");
        return platform::RunLoop::main()->runUntil([&] { return is_done(user); },
                                                   std::chrono::milliseconds{limit_milliseconds});
    });
}

kivo_status kivo_main_stop() {
    return c::statusOf(__func__, [] { platform::RunLoop::main()->stop(); });
}

size_t kivo_main_drain() {
    return c::resultOf(__func__, std::size_t{0}, [] { return platform::RunLoop::main()->drain(); });
}

int kivo_main_descriptor() {
    return c::resultOf(__func__, -1, [] { return platform::RunLoop::main()->fileDescriptor(); });
}

kivo_status kivo_main_post(uint32_t delay_milliseconds, kivo_work work, void* user, kivo_release release) {
    c::UserData data{user, release};
    return c::statusOf(__func__, [&] {
        c::notNull(work, "work");
        platform::services().mainQueue->asyncAfter(std::chrono::milliseconds{delay_milliseconds},
                                                   [work, held = std::move(data).shared()] { work(held->pointer()); });
    });
}
}
