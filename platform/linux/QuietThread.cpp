#include "linux/QuietThread.hpp"

#include <csignal>
#include <thread>
#include <utility>

namespace kivo::platform {

std::error_code startQuietThread(std::function<void()> body) {
    sigset_t all;
    sigset_t former;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former);
    std::error_code error;
    try {
        std::thread{std::move(body)}.detach();
    } catch (const std::system_error& failure) {
        error = failure.code();
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return error;
}

} // namespace kivo::platform
