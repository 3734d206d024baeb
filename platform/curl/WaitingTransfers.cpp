#include "platform/curl/WaitingTransfers.hpp"

namespace kivo::platform {

void WaitingTransfers::add(Transfer transfer) {
    auto& queue = queues_[transfer->server()];
    const auto key = keyOf(*transfer);
    places_.emplace(key, Place{.at = queue.insert(queue.end(), std::move(transfer))});
}

void WaitingTransfers::addInFront(Transfer transfer) {
    const bool isAside = transfer->awaitsVerdict();
    auto& queue = isAside ? aside_ : queues_[transfer->server()];
    const auto key = keyOf(*transfer);
    places_.emplace(key, Place{.isAside = isAside, .at = queue.insert(queue.begin(), std::move(transfer))});
}

void WaitingTransfers::goOn(const CurlTransfer& transfer) {
    const auto place = places_.find(keyOf(transfer));
    if (place != places_.end() && place->second.isAside) {
        auto& queue = queues_[transfer.server()];
        queue.splice(queue.begin(), aside_, place->second.at);
        place->second.isAside = false;
    }
}

bool WaitingTransfers::remove(const CurlTransfer& transfer) {
    const auto place = places_.find(keyOf(transfer));
    if (place == places_.end()) {
        return false;
    }
    const auto [isAside, at] = place->second;
    places_.erase(place);
    if (isAside) {
        aside_.erase(at);
        return true;
    }
    const auto queue = queues_.find(transfer.server());
    queue->second.erase(at);
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
    return !isEmpty() && firstDeadline() <= now ? take(*places_.begin()->second.at) : nullptr;
}

} // namespace kivo::platform
