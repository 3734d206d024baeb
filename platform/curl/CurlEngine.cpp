#include "platform/curl/CurlEngine.hpp"

#include "platform/curl/CurlServers.hpp"
#include "platform/curl/WaitingTransfers.hpp"
#include "platform/posix/BackgroundThread.hpp"

#include <openssl/crypto.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <ranges>
#include <string>
#include <utility>

namespace kivo::platform {
namespace {

constexpr int longPollMs = 3'600'000;
constexpr int blindPollMs = 20;

} // namespace

// The state that belongs to the engine's thread alone.
class CurlEngine::Loop {
public:
    explicit Loop(CurlEngine& engine)
        : engine_{engine}
        , multi_{curl_multi_init()}
        , servers_{engine.sharesConnections_} {
        const long sharing = engine.sharesConnections_ ? CURLPIPE_MULTIPLEX : CURLPIPE_NOTHING;
        curl_multi_setopt(multi_, CURLMOPT_PIPELINING, sharing);
    }

    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    ~Loop() { curl_multi_cleanup(multi_); }

    void run() {
        while (takeCommands()) {
            do {
                perform();
                collect();
                startWaiting();
            } while (!waitForWork());
        }
        while (!active_.empty()) {
            finishCancelled(active_.back().transfer);
        }
        while (const auto transfer = waiting_.takeLate(WaitingTransfers::Time::max())) {
            endCancelled(transfer);
        }
    }

private:
    struct Active {
        std::shared_ptr<CurlTransfer> transfer;
        /// The transfer may be destroyed before its handle has left the jar.
        std::shared_ptr<const CookieJar> jar;
        EasyHandle easy;
    };

    // Carries out the commands of other threads; false when the engine is to end.
    bool takeCommands() {
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
            endCancelled(std::move(transfer));
        } else if (const auto now = std::chrono::steady_clock::now();
                   transfer->deadline() > now && servers_.at(transfer->server()).hasRoom(now)) {
            begin(std::move(transfer));
        } else {
            waiting_.add(std::move(transfer));
        }
    }

    // Begins the waiting transfers that may start now, in their order, and ends the transfers whose time is up.
    void startWaiting() {
        if (waiting_.isEmpty()) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        while (auto late = waiting_.takeLate(now)) {
            late->concludeUnsent(CURLE_OPERATION_TIMEDOUT);
            handOver(std::move(late));
        }
        const auto hasRoom = [&](const std::string& server) { return servers_.at(server).hasRoom(now); };
        while (auto next = waiting_.takeNext(hasRoom)) {
            begin(std::move(next));
        }
    }

    void begin(std::shared_ptr<CurlTransfer> transfer) {
        Active entry{.transfer = std::move(transfer), .jar = nullptr, .easy = handles_.take()};
        entry.jar = entry.transfer->jar();
        const bool isPrepared =
            entry.transfer->prepare(entry.easy.get(), sockets_, servers_.at(entry.transfer->server()));
        if (isPrepared && curl_multi_add_handle(multi_, entry.easy.get()) == CURLM_OK) {
            active_.push_back(std::move(entry));
            hasBegun_ = true;
            return;
        }
        if (isPrepared) {
            entry.transfer->concludeUnsent(CURLE_FAILED_INIT);
        }
        handOver(std::move(entry.transfer));
        handles_.giveBack(std::move(entry.easy));
    }

    // When a request begins or is given up, libcurl may forget to wake the requests for which it has just read bytes
    // from a shared connection. All of them get another look then.
    void perform() {
        auto alive = std::ssize(active_);
        bool mayForget = false;
        do {
            int running = 0;
            curl_multi_perform(multi_, &running);
            mayForget = servers_.share() && (std::exchange(hasBegun_, false) || running < alive);
            alive = running;
        } while (mayForget);
    }

    // Takes the results of the exchanges that have ended since the last call.
    void collect() {
        int left = 0;
        std::vector<std::shared_ptr<CurlTransfer>> further;
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
                handOver(std::move(ended.transfer));
            } else {
                further.push_back(std::move(ended.transfer));
            }
            handles_.giveBack(std::move(ended.easy));
        }
        // The first comes to the front last.
        for (auto& transfer : std::views::reverse(further)) {
            waiting_.addInFront(std::move(transfer));
        }
    }

    // Does nothing when the transfer has ended already.
    void finishCancelled(std::shared_ptr<CurlTransfer> transfer) {
        if (waiting_.remove(*transfer)) {
            endCancelled(std::move(transfer));
            return;
        }
        auto ended = takeOut([&](const Active& entry) { return entry.transfer == transfer; });
        if (ended.transfer) {
            curl_multi_remove_handle(multi_, ended.easy.get());
            endCancelled(std::move(ended.transfer));
            handles_.giveBack(std::move(ended.easy));
        }
    }

    void endCancelled(std::shared_ptr<CurlTransfer> transfer) {
        transfer->concludeCancelled();
        handOver(std::move(transfer));
    }

    // Waits for news of a connection, for a command of another thread, or until a waiting transfer's time is up. True
    // when there may be a command.
    bool waitForWork() {
        curl_waitfd wake{engine_.wakeDescriptor_, CURL_WAIT_POLLIN, 0};
        const bool isBlind = engine_.wakeDescriptor_ < 0;
        const auto longest = isBlind ? blindPollMs : longPollMs;
        curl_multi_poll(multi_, &wake, isBlind ? 0 : 1, std::min(longest, patienceMs()), nullptr);
        std::uint64_t count = 0;
        return isBlind || (wake.revents != 0 && ::read(engine_.wakeDescriptor_, &count, sizeof count) > 0);
    }

    // The time until a waiting transfer's time is up, or a server has room for one.
    int patienceMs() const {
        if (waiting_.isEmpty()) {
            return longPollMs;
        }
        const auto now = std::chrono::steady_clock::now();
        const auto next = std::min(waiting_.firstDeadline(), servers_.nextRoom(now));
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - now);
        return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, longPollMs));
    }

    // Takes an entry out of the active entries; an empty entry when none is wanted.
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

    void handOver(std::shared_ptr<CurlTransfer> transfer) {
        engine_.callBack([transfer = std::move(transfer)] { transfer->deliver(); });
    }

    CurlEngine& engine_;
    CurlSockets sockets_;
    CURLM* const multi_;
    CurlHandles handles_;
    CurlServers servers_;
    std::shared_ptr<const CookieJar> jar_ = std::make_shared<const CookieJar>();
    std::vector<Active> active_;
    bool hasBegun_ = false;
    WaitingTransfers waiting_;
    Commands commands_;
};

std::shared_ptr<CurlEngine> CurlEngine::start(std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections) {
    auto engine = std::make_shared<CurlEngine>(std::move(callbacks), sharesConnections);
    if (ExitGuard::shared().add(engine)) {
        const auto error = startBackgroundThread("kivo-network", [engine] {
            ExitGuard::markMemberThread();
            Loop{*engine}.run();
            // Otherwise OpenSSL frees its data at the thread's end, for which an exiting process does not wait.
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

CurlEngine::CurlEngine(std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections)
    : callbacks_{std::move(callbacks)}
    , sharesConnections_{sharesConnections}
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
    bool isFirst = false;
    {
        const std::scoped_lock lock{mutex_};
        isFirst = commands_.list.empty();
        commands_.list.push_back(std::move(command));
    }
    // The thread takes all commands at once, so the first has woken it for the others.
    if (isFirst) {
        wake();
    }
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
    // The thread may have been woken for a command too, which is still to be carried out.
    wake();
    return isDecided;
}

bool CurlEngine::isStopping() {
    const std::scoped_lock lock{mutex_};
    return commands_.stopping;
}

void CurlEngine::wake() const {
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then the thread wakes anyway.
    [[maybe_unused]] const auto written = ::write(wakeDescriptor_, &one, sizeof one);
}

} // namespace kivo::platform
