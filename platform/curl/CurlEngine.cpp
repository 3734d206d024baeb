#include "platform/curl/CurlEngine.hpp"

#include "platform/curl/CurlLoop.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kivo::platform {

std::shared_ptr<CurlEngine> CurlEngine::start(Driver driver, std::shared_ptr<DispatchQueue> callbacks,
                                              bool sharesConnections) {
    auto engine = std::make_shared<CurlEngine>(driver, std::move(callbacks), sharesConnections);
    if (const auto error = engine->threads_.start(engine, engine->callbacks_ == nullptr)) {
        throw std::system_error{error, "kivo cannot start its network threads"};
    }
    return engine;
}

CurlEngine::CurlEngine(Driver driver, std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections)
    : driver_{driver}
    , sharesConnections_{sharesConnections}
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

void CurlEngine::goOn(std::shared_ptr<CurlTransfer> transfer) {
    order({Command::What::goOn, std::move(transfer)});
    // The thread carries no command out in holdUntil(), so an earlier command may have used up its wake-up.
    threads_.wake();
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
        threads_.wake();
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
