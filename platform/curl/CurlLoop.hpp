#pragma once

#include "platform/curl/CurlEngine.hpp"
#include "platform/curl/CurlServers.hpp"
#include "platform/curl/WaitingTransfers.hpp"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

namespace kivo::platform {

/// The state of an engine that belongs to its driving thread alone.
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

    // Returns whether transfers are left.
    bool drive() {
        takeCommands();
        while (true) {
            perform();
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
            case Command::What::goOn:
                waiting_.goOn(*transfer);
                break;
            }
        }
        commands_.list.clear();
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
            sockets_.turns().begin();
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
            sockets_.turns().noteProgress();
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
        auto longest = std::min(isBlind ? blindPollMs : longPollMs, patienceMs());
        if (sockets_.turns().areFruitless()) {
            sockets_.waitForBytes(engine_.wakeDescriptor_,
                                  std::min(CurlTurns::rest, std::chrono::milliseconds{longest}));
            longest = 0;
        }
        curl_multi_poll(multi_, &wake, isBlind ? 0 : 1, longest, nullptr);
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
    std::vector<Active> active_;
    bool hasBegun_ = false;
    WaitingTransfers waiting_;
    Commands commands_;
};

} // namespace kivo::platform
