#include "platform/curl/CurlEngine.hpp"

#include "platform/posix/BackgroundThread.hpp"

#include <openssl/crypto.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace kivo::platform {
namespace {

// Further requests to the same server wait, as servers expect of a polite client. They wait here, not in libcurl: some
// of its versions forget them when connections end together, and let none of them run out of time.
constexpr std::ptrdiff_t requestsPerServer = 6;
constexpr int longPollMs = 3'600'000;
constexpr int blindPollMs = 20;

} // namespace

// Everything that belongs to the engine's thread alone.
class CurlEngine::Loop {
public:
    explicit Loop(CurlEngine& engine)
        : engine_{engine}
        , multi_{curl_multi_init()} {}

    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    ~Loop() { curl_multi_cleanup(multi_); }

    void run() {
        while (obey()) {
            do {
                int running = 0;
                curl_multi_perform(multi_, &running);
                collect();
                startWaiting();
            } while (!waitForWork());
        }
        while (!active_.empty()) {
            finishCancelled(active_.back().transfer);
        }
        while (!waiting_.empty()) {
            finishCancelled(waiting_.front());
        }
    }

private:
    struct Active {
        std::shared_ptr<CurlTransfer> transfer;
        /// The transfer may be gone before its handle has left the jar.
        std::shared_ptr<const CookieJar> jar;
        EasyHandle easy;
    };

    // Carries out what other threads asked for; false when the engine is to end.
    bool obey() {
        {
            const std::scoped_lock lock{engine_.mutex_};
            std::swap(commands_.list, engine_.commands_.list);
            commands_.stopping = engine_.commands_.stopping;
        }
        for (auto& [what, transfer] : commands_.list) {
            switch (what) {
            case Command::What::add:
                transfer->useJar(jar_);
                take(std::move(transfer));
                break;
            case Command::What::cancel:
                finishCancelled(std::move(transfer));
                break;
            case Command::What::forgetCookies:
                jar_ = std::make_shared<const CookieJar>();
                break;
            }
        }
        commands_.list.clear();
        return !commands_.stopping;
    }

    void take(std::shared_ptr<CurlTransfer> transfer) {
        if (transfer->isCancelled() || commands_.stopping) {
            transfer->concludeCancelled();
            hand(std::move(transfer));
        } else if (mayStart(*transfer) && transfer->deadline() > std::chrono::steady_clock::now()) {
            begin(std::move(transfer));
        } else {
            waiting_.push_back(std::move(transfer));
        }
    }

    bool mayStart(const CurlTransfer& transfer) const {
        const auto goesToTheSame = [&](const Active& entry) { return entry.transfer->server() == transfer.server(); };
        return !transfer.awaitsVerdict() && std::ranges::count_if(active_, goesToTheSame) < requestsPerServer;
    }

    // Lets those go on that waited for others to end, in the order they came, and ends those that waited too long.
    void startWaiting() {
        if (waiting_.empty()) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        std::erase_if(waiting_, [&](const std::shared_ptr<CurlTransfer>& transfer) {
            if (transfer->deadline() <= now) {
                transfer->concludeUnsent(CURLE_OPERATION_TIMEDOUT);
                hand(transfer);
                return true;
            }
            if (mayStart(*transfer)) {
                begin(transfer);
                return true;
            }
            return false;
        });
    }

    void begin(std::shared_ptr<CurlTransfer> transfer) {
        Active entry{.transfer = std::move(transfer), .jar = nullptr, .easy = handles_.take()};
        entry.jar = entry.transfer->jar();
        const bool isPrepared = entry.transfer->prepare(entry.easy.get(), sockets_);
        if (isPrepared && curl_multi_add_handle(multi_, entry.easy.get()) == CURLM_OK) {
            active_.push_back(std::move(entry));
            return;
        }
        if (isPrepared) {
            entry.transfer->concludeUnsent(CURLE_FAILED_INIT);
        }
        hand(std::move(entry.transfer));
        handles_.giveBack(std::move(entry.easy));
    }

    // Hands over the exchanges that have ended since the last look.
    void collect() {
        int left = 0;
        while (const auto* const message = curl_multi_info_read(multi_, &left)) {
            if (message->msg != CURLMSG_DONE) {
                continue;
            }
            const auto code = message->data.result;
            auto ended =
                takeOut([easy = message->easy_handle](const Active& entry) { return entry.easy.get() == easy; });
            const bool isOver = ended.transfer->conclude(code);
            curl_multi_remove_handle(multi_, ended.easy.get());
            if (isOver) {
                hand(std::move(ended.transfer));
            } else {
                waiting_.insert(waiting_.begin(), std::move(ended.transfer));
            }
            handles_.giveBack(std::move(ended.easy));
        }
    }

    // Does nothing with a transfer that has ended by itself.
    void finishCancelled(std::shared_ptr<CurlTransfer> transfer) {
        if (std::erase(waiting_, transfer) > 0) {
            transfer->concludeCancelled();
            hand(std::move(transfer));
            return;
        }
        auto ended = takeOut([&](const Active& entry) { return entry.transfer == transfer; });
        if (ended.transfer) {
            curl_multi_remove_handle(multi_, ended.easy.get());
            ended.transfer->concludeCancelled();
            hand(std::move(ended.transfer));
            handles_.giveBack(std::move(ended.easy));
        }
    }

    // Waits until a connection or another thread has something, or a waiting transfer's time is up; true when it may be
    // another thread.
    bool waitForWork() {
        curl_waitfd wake{engine_.wakeDescriptor_, CURL_WAIT_POLLIN, 0};
        const bool isBlind = engine_.wakeDescriptor_ < 0;
        const auto longest = isBlind ? blindPollMs : longPollMs;
        curl_multi_poll(multi_, &wake, isBlind ? 0 : 1, std::min(longest, patienceMs()), nullptr);
        std::uint64_t count = 0;
        return isBlind || (wake.revents != 0 && ::read(engine_.wakeDescriptor_, &count, sizeof count) > 0);
    }

    // How long it takes until the first of the waiting transfers has waited too long.
    int patienceMs() const {
        auto patience = std::chrono::milliseconds{longPollMs};
        const auto now = std::chrono::steady_clock::now();
        for (const auto& transfer : waiting_) {
            patience = std::min(patience, std::chrono::ceil<std::chrono::milliseconds>(transfer->deadline() - now));
        }
        return static_cast<int>(std::max<std::int64_t>(patience.count(), 0));
    }

    // Takes an entry out of those under way; an empty one when there is none such.
    template <typename Predicate>
    Active takeOut(const Predicate& isWanted) {
        const auto found = std::ranges::find_if(active_, isWanted);
        if (found == active_.end()) {
            return {};
        }
        std::swap(*found, active_.back());
        auto entry = std::move(active_.back());
        active_.pop_back();
        return entry;
    }

    void hand(std::shared_ptr<CurlTransfer> transfer) {
        engine_.callBack([transfer = std::move(transfer)] { transfer->deliver(); });
    }

    CurlEngine& engine_;
    CurlSockets sockets_;
    CURLM* const multi_;
    CurlHandles handles_;
    std::shared_ptr<const CookieJar> jar_ = std::make_shared<const CookieJar>();
    std::vector<Active> active_;
    std::vector<std::shared_ptr<CurlTransfer>> waiting_;
    Commands commands_;
};

std::shared_ptr<CurlEngine> CurlEngine::start(std::shared_ptr<DispatchQueue> callbacks) {
    auto engine = std::make_shared<CurlEngine>(std::move(callbacks));
    if (ExitGuard::shared().add(engine)) {
        const auto error = startBackgroundThread("kivo-network", [engine] {
            ExitGuard::markMemberThread();
            Loop{*engine}.run();
            // Otherwise OpenSSL tidies up after this thread when it ends, which the exiting process does not wait for.
            OPENSSL_thread_stop();
            ExitGuard::shared().remove(engine.get());
        });
        if (error) {
            ExitGuard::shared().remove(engine.get());
            throw std::system_error{error, "kivo cannot start its network thread"};
        }
    }
    return engine;
}

CurlEngine::CurlEngine(std::shared_ptr<DispatchQueue> callbacks)
    : callbacks_{std::move(callbacks)}
    , wakeDescriptor_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)} {}

CurlEngine::~CurlEngine() {
    if (wakeDescriptor_ >= 0) {
        ::close(wakeDescriptor_);
    }
}

void CurlEngine::add(std::shared_ptr<CurlTransfer> transfer) {
    order({Command::What::add, std::move(transfer)});
}

void CurlEngine::cancel(std::shared_ptr<CurlTransfer> transfer) {
    order({Command::What::cancel, std::move(transfer)});
}

void CurlEngine::forgetCookies() {
    order({Command::What::forgetCookies, nullptr});
}

void CurlEngine::order(Command command) {
    {
        const std::scoped_lock lock{mutex_};
        commands_.list.push_back(std::move(command));
    }
    wake();
}

void CurlEngine::stop() {
    {
        const std::scoped_lock lock{mutex_};
        commands_.stopping = true;
    }
    wake();
}

bool CurlEngine::holdUntil(const std::function<bool()>& decided, std::chrono::steady_clock::time_point deadline) {
    bool isDecided = decided();
    while (!isDecided && !isStopping()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            break;
        }
        const auto longest = wakeDescriptor_ < 0 ? blindPollMs : longPollMs;
        pollfd polled{.fd = wakeDescriptor_, .events = POLLIN, .revents = 0};
        ::poll(&polled, 1, static_cast<int>(std::min<std::int64_t>(left.count(), longest)));
        std::uint64_t count = 0;
        [[maybe_unused]] const auto taken = ::read(wakeDescriptor_, &count, sizeof count);
        isDecided = decided();
    }
    // What else the thread was woken for is still to do.
    wake();
    return isDecided;
}

bool CurlEngine::isStopping() {
    const std::scoped_lock lock{mutex_};
    return commands_.stopping;
}

void CurlEngine::wake() const {
    const std::uint64_t one = 1;
    // Cannot fail but when the counter is full, and then the thread wakes anyway.
    [[maybe_unused]] const auto written = ::write(wakeDescriptor_, &one, sizeof one);
}

} // namespace kivo::platform
