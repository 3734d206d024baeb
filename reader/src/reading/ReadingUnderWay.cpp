#include "reading/ReadingUnderWay.hpp"

#include "crypto/Cryptography.hpp"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::reader {
namespace {

constexpr std::chrono::seconds patience{2};

thread_local std::size_t readingsOnThisThread = 0;

struct Readings {
    /// The process that has the readings' threads: a forked child has none of them.
    const pid_t process = ::getpid();
    std::mutex mutex{};
    std::condition_variable changed{};
    std::vector<std::stop_source> underWay{};
    bool isExiting = false;

    void stopAll() {
        if (process != ::getpid()) {
            return;
        }
        std::unique_lock lock{mutex};
        isExiting = true;
        const auto stops = underWay;
        // A stop may call into the card service, or wake a thread that ends its reading.
        lock.unlock();
        for (const auto& stop : stops) {
            stop.request_stop();
        }
        lock.lock();
        changed.wait_for(lock, patience, [this] { return underWay.size() <= readingsOnThisThread; });
    }
};

/// Never destroyed: threads that outlast the wait still use the readings.
Readings& readings() {
    static Readings& all = *new Readings;
    return all;
}

} // namespace

void ReadingUnderWay::prepare() {
    static const bool isPrepared = [] {
        readings();
        // Exit handlers run in reverse order of their registration, and OpenSSL registers its own here.
        prepareCryptography();
        return std::atexit([] { readings().stopAll(); }) == 0;
    }();
    static_cast<void>(isPrepared);
}

ReadingUnderWay::ReadingUnderWay(std::stop_source stop)
    : stop_{std::move(stop)} {
    auto& all = readings();
    std::unique_lock lock{all.mutex};
    while (all.isExiting) {
        lock.unlock();
        // The thread would also release what a reading holds, and ends with the process.
        ::pause();
        lock.lock();
    }
    all.underWay.push_back(stop_);
    ++readingsOnThisThread;
}

ReadingUnderWay::~ReadingUnderWay() {
    endCryptographyOfThread();
    --readingsOnThisThread;
    auto& all = readings();
    const std::scoped_lock lock{all.mutex};
    std::erase(all.underWay, stop_);
    all.changed.notify_all();
}

} // namespace kivo::reader
