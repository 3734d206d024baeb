#include "platform/posix/BackgroundThread.hpp"

#include <pthread.h>

#include <csignal>
#include <thread>
#include <utility>

namespace kivo::platform {

std::error_code startBackgroundThread(const char* name, std::function<void()> body) {
    // A thread inherits its creator's mask. Writing to a closed connection raises SIGPIPE, which would end the host;
    // faults stay unblocked, for the host's crash reporter.
    sigset_t blocked;
    sigset_t former;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&blocked, fault);
    }
    pthread_sigmask(SIG_SETMASK, &blocked, &former);
    std::error_code error;
    try {
        std::thread thread{std::move(body)};
        pthread_setname_np(thread.native_handle(), name);
        thread.detach();
    } catch (const std::system_error& failure) {
        error = failure.code();
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return error;
}

} // namespace kivo::platform
