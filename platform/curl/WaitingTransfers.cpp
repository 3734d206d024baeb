#include "platform/curl/WaitingTransfers.hpp"

namespace kivo::platform {

void WaitingTransfers::add(Transfer transfer) {
    auto& queue = queues_[transfer->server()];
    const auto key = keyOf(*transfer);
    places_.emplace(key, queue.insert(queue.end(), std::move(transfer)));
}

void WaitingTransfers::addInFront(Transfer transfer) {
    auto& queue = queues_[transfer->server()];
    const auto key = keyOf(*transfer);
    places_.emplace(key, queue.insert(queue.begin(), std::move(transfer)));
}

bool WaitingTransfers::remove(const CurlTransfer& transfer) {
    const auto place = places_.find(keyOf(transfer));
    if (place == places_.end()) {
        return false;
    }
    const auto queue = queues_.find(transfer.server());
    queue->second.erase(place->second);
    places_.erase(place);
    if (queue->second.empty()) {
        queues_.erase(queue);
    }
    return true;
}

WaitingTransfers::Transfer WaitingTransfers::take(const Transfer& transfer) {
    auto taken = transfer;
    remove(*taken);
    return taken;
}

WaitingTransfers::Transfer WaitingTransfers::takeLate(Time now) {
    return !isEmpty() && firstDeadline() <= now ? take(*places_.begin()->second) : nullptr;
}

} // namespace kivo::platform
