#include "platform/curl/CurlEngine.hpp"

#include "platform/curl/WaitingTransfers.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace kivo::platform {
namespace {

// Further requests to the same server wait, as servers expect of a polite client. They wait here and not in libcurl:
// some versions of libcurl forget waiting requests when connections end together, and do not time them out.
constexpr std::ptrdiff_t requestsPerServer = 6;
constexpr int longPollMs = 3'600'000;
constexpr int blindPollMs = 20;

} // namespace

// The state that belongs to the engine's thread alone.
class CurlEngine::Loop {
public:
    explicit Loop(CurlEngine& engine)
        : engine_{engine}
        , multi_{curl_multi_init()} {}

    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    ~Loop() { curl_multi_cleanup(multi_); }

    // Returns whether transfers are left.
    bool drive() {
        takeCommands();
        while (true) {
            int running = 0;
            curl_multi_perform(multi_, &running);
            collect();
            startWaiting();
            if (isIdle() || engine_.threads_.mustReturn()) {
                engine_.isConnected_ = !sockets_.isEmpty();
                return !isIdle();
            }
            if (waitForWork()) {
                takeCommands();
            }
        }
    }

    void finish() {
        takeCommands();
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

    bool isIdle() const { return active_.empty() && waiting_.isEmpty(); }

    // Carries out the commands of other threads.
    void takeCommands() {
        {
            const std::scoped_lock lock{engine_.mutex_};
            std::swap(commands_.list, engine_.commands_.list);
            commands_.stopping = engine_.commands_.stopping;
        }
        for (auto& [what, transfer] : commands_.list) {
            switch (what) {
            case Command::What::add:
                transfer->findDestination();
                take(std::move(transfer));
                break;
            case Command::What::cancel:
                finishCancelled(std::move(transfer));
                break;
            }
        }
        commands_.list.clear();
    }

    void take(std::shared_ptr<CurlTransfer> transfer) {
        if (transfer->isCancelled() || commands_.stopping) {
            endCancelled(std::move(transfer));
        } else if (hasRoom(transfer->server()) && transfer->deadline() > std::chrono::steady_clock::now()) {
            begin(std::move(transfer));
        } else {
            waiting_.add(std::move(transfer));
        }
    }

    bool hasRoom(std::string_view server) const {
        const auto goesThere = [&](const Active& entry) { return entry.transfer->server() == server; };
        return std::ranges::count_if(active_, goesThere) < requestsPerServer;
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
        while (auto next = waiting_.takeNext([this](std::string_view server) { return hasRoom(server); })) {
            begin(std::move(next));
        }
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
        handOver(std::move(entry.transfer));
        handles_.giveBack(std::move(entry.easy));
    }

    // Takes the results of the exchanges that have ended since the last call.
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
                handOver(std::move(ended.transfer));
            } else {
                waiting_.addInFront(std::move(ended.transfer));
            }
            handles_.giveBack(std::move(ended.easy));
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

    // The time until the first waiting transfer has waited too long.
    int patienceMs() const {
        if (waiting_.isEmpty()) {
            return longPollMs;
        }
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(waiting_.firstDeadline() - std::chrono::steady_clock::now());
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
    std::vector<Active> active_;
    WaitingTransfers waiting_;
    Commands commands_;
};

std::shared_ptr<CurlEngine> CurlEngine::start(Driver driver, std::shared_ptr<DispatchQueue> callbacks) {
    auto engine = std::make_shared<CurlEngine>(driver, std::move(callbacks));
    if (const auto error = engine->threads_.start(engine, engine->callbacks_ == nullptr)) {
        throw std::system_error{error, "kivo cannot start its network threads"};
    }
    return engine;
}

CurlEngine::CurlEngine(Driver driver, std::shared_ptr<DispatchQueue> callbacks)
    : driver_{driver}
    , callbacks_{std::move(callbacks)}
    , loop_{std::make_unique<Loop>(*this)}
    , wakeDescriptor_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)} {}

CurlEngine::~CurlEngine() {
    if (wakeDescriptor_ >= 0) {
        ::close(wakeDescriptor_);
    }
}

void CurlEngine::add(std::shared_ptr<CurlTransfer> transfer) {
    {
        const std::scoped_lock lock{mutex_};
        if (!jar_ && !commands_.stopping) {
            jar_ = std::make_shared<const CookieJar>();
        }
        transfer->useJar(jar_);
    }
    order({Command::What::add, std::move(transfer)});
}

void CurlEngine::cancel(std::shared_ptr<CurlTransfer> transfer) {
    order({Command::What::cancel, std::move(transfer)});
}

void CurlEngine::forgetCookies() {
    // Outlives the lock: without transfers that use the jar, the jar is destroyed here.
    std::shared_ptr<const CookieJar> former;
    const std::scoped_lock lock{mutex_};
    std::swap(former, jar_);
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
    threads_.stop();
}

bool CurlEngine::drive() {
    return loop_->drive();
}

void CurlEngine::finish() {
    loop_->finish();
    loop_.reset();
    forgetCookies();
}

void CurlEngine::callBack(std::function<void()> block) {
    if (callbacks_) {
        callbacks_->async(std::move(block));
    } else {
        threads_.callBack(std::move(block));
    }
}

bool CurlEngine::holdUntil(const std::function<bool()>& decided, std::chrono::steady_clock::time_point deadline) {
    bool isDecided = decided();
    // A decision that needs the callback thread does not come while that thread waits here.
    if (threads_.isCallbackThread()) {
        return isDecided;
    }
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
    interrupt();
    return isDecided;
}

bool CurlEngine::isStopping() {
    const std::scoped_lock lock{mutex_};
    return commands_.stopping;
}

void CurlEngine::interrupt() const {
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then the thread wakes anyway.
    [[maybe_unused]] const auto written = ::write(wakeDescriptor_, &one, sizeof one);
}

} // namespace kivo::platform
