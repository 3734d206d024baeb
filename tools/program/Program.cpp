#include "program/Program.hpp"

#include "program/Temporary.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

namespace program {
namespace {

constexpr int failed = 1;

std::string& programName() {
    static std::string name;
    return name;
}

/// A read of a descriptor that was closed, or a write, still fails: /dev/null is opened for the other direction.
void openStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            // The lowest free number, which is `descriptor`.
            [[maybe_unused]] const int opened = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

bool isIgnored(int signal) {
    struct sigaction action{};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// What a signal does to the program.
struct Ending {
    std::mutex mutex;
    std::condition_variable hasCome;
    bool isAwaited = false;
    bool isAskedFor = false;

    /// Hands a signal to the one who waits. Returns whether there is one, and this is the first signal.
    bool handOver() {
        const std::scoped_lock lock{mutex};
        const bool isFirst = isAwaited && !isAskedFor;
        isAskedFor = isAskedFor || isAwaited;
        hasCome.notify_all();
        return isFirst;
    }
};

Ending& ending() {
    // Never destroyed: the thread that waits for signals may need the object until the end.
    static auto& only = *new Ending;
    return only;
}

/// Waits on a thread of its own for the signals that end the program: unlike a signal handler, a thread may remove
/// files.
class EndingSignals {
public:
    EndingSignals() {
        sigemptyset(&signals_);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            if (!isIgnored(signal)) {
                sigaddset(&signals_, signal);
            }
        }
        // The destructor ends the thread with this signal, which no shell or terminal sends.
        sigaddset(&signals_, wakeUp());
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        thread_ = std::thread{[this] { wait(); }};
    }

    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

    ~EndingSignals() {
        isOver_ = true;
        pthread_kill(thread_.native_handle(), wakeUp());
        thread_.join();
    }

private:
    static int wakeUp() { return SIGRTMIN; }

    void wait() const {
        int signal = 0;
        do {
            sigwait(&signals_, &signal);
            if (isOver_) {
                return;
            }
        } while (signal == wakeUp() || ending().handOver());
        const auto held = removeTemporaries();
        // With the signal's own action, so that the parent sees which signal ended the program.
        std::signal(signal, SIG_DFL);
        pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
        std::raise(signal);
    }

    sigset_t signals_{};
    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};

int guarded(const std::function<int()>& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        complain("there is not enough memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return failed;
}

} // namespace

int run(const std::string& name, const std::function<int()>& body) {
    programName() = name;
    openStandardDescriptors();
    const EndingSignals signals;
    const int status = guarded(body);
    if (const auto problem = finish(stdout); !problem.empty()) {
        complain(problem);
        return failed;
    }
    return status;
}

EndingSignal::EndingSignal() {
    const std::scoped_lock lock{ending().mutex};
    ending().isAwaited = true;
    ending().isAskedFor = false;
}

EndingSignal::~EndingSignal() {
    const std::scoped_lock lock{ending().mutex};
    ending().isAwaited = false;
}

void EndingSignal::wait() {
    std::unique_lock lock{ending().mutex};
    ending().hasCome.wait(lock, [] { return ending().isAskedFor; });
}

void complain(const std::string& sentence) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", programName().c_str(), printable(sentence).c_str());
}

std::string printable(std::string_view text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0U;
        // In UTF-8, the controls beyond those of ASCII are C2 80 to C2 9F.
        const bool isLater = byte == 0xC2 && next >= 0x80 && next < 0xA0;
        at += isLater ? 1 : 0;
        shown += isLater || byte < ' ' || byte == 0x7F ? '?' : static_cast<char>(byte);
    }
    return shown;
}

std::string finish(std::FILE* stream) {
    errno = 0;
    const bool isWritten = std::fflush(stream) == 0 && std::ferror(stream) == 0;
    // Some file systems tell only then, when a descriptor is closed, that there was no room.
    const int copy = isWritten ? fcntl(fileno(stream), F_DUPFD_CLOEXEC, 0) : -1;
    if (isWritten && (copy < 0 || close(copy) == 0)) {
        return "";
    }
    return "standard output could not be written" +
           (errno == 0 ? "" : " (" + std::generic_category().message(errno) + ")");
}

void endAtOnce(int status) {
    std::fflush(nullptr);
    auto held = removeTemporaries();
    // The lock stays taken, so that no other thread makes a folder that would outlive the process.
    static_cast<void>(held.release());
    std::_Exit(status);
}

} // namespace program
