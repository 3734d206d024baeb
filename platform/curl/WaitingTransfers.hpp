#pragma once

#include "platform/curl/CurlTransfer.hpp"

#include <chrono>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace kivo::platform {

/// The transfers for which no exchange is under way, in their order for each server. For one thread.
///
/// The time of each function grows with the number of servers and with the logarithm of the number of transfers.
class WaitingTransfers {
public:
    using Transfer = std::shared_ptr<CurlTransfer>;
    using Time = std::chrono::steady_clock::time_point;

    bool isEmpty() const { return places_.empty(); }

    /// Adds a transfer behind the others to its server.
    void add(Transfer transfer);

    /// Adds a transfer in front of the others to its server, or sets it aside until `goOn()` while the transfer awaits
    /// its delegate's verdict.
    void addInFront(Transfer transfer);

    /// Puts a transfer that was set aside in front of the others to its server. Does nothing with any other transfer.
    void goOn(const CurlTransfer& transfer);

    /// Takes a transfer out; false when the transfer does not wait.
    bool remove(const CurlTransfer& transfer);

    /// Takes the first transfer to a server for which `hasRoom(server)` is true. Null when there is none.
    template <typename HasRoom>
    Transfer takeNext(const HasRoom& hasRoom) {
        for (const auto& [server, queue] : queues_) {
            if (hasRoom(server)) {
                return take(queue.front());
            }
        }
        return nullptr;
    }

    /// Takes the transfer whose time ends first, if the end is not after `now`. Null otherwise.
    Transfer takeLate(Time now);

    /// The end of the time of the transfer whose time ends first; the end of all times without transfers.
    Time firstDeadline() const { return isEmpty() ? Time::max() : places_.begin()->first.first; }

private:
    using Queue = std::list<Transfer>;
    using Key = std::pair<Time, const CurlTransfer*>;

    struct Place {
        bool isAside = false;
        Queue::iterator at;
    };

    static Key keyOf(const CurlTransfer& transfer) { return {transfer.deadline(), &transfer}; }

    /// `transfer` is an element of a queue.
    Transfer take(const Transfer& transfer);

    /// No queue is empty.
    std::map<std::string, Queue> queues_;
    Queue aside_;
    /// The place of each transfer in its queue or aside.
    std::map<Key, Place> places_;
};

} // namespace kivo::platform
