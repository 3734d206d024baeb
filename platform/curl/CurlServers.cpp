#include "platform/curl/CurlServers.hpp"

#include <algorithm>

namespace kivo::platform {
namespace {

// Redirects may lead to any number of servers.
constexpr std::size_t mostKnown = 32;

} // namespace

bool CurlServer::hasRoom(Time now) const {
    if (isWaitedFor()) {
        return isSlow(now) && underWay_ < mostAlone;
    }
    return underWay_ < (mayShare() ? window_ : mostAlone);
}

CurlServer::Time CurlServer::nextRoom(Time now) const {
    return isWaitedFor() && !isSlow(now) ? since_ + patience : Time::max();
}

void CurlServer::begin(Time now) {
    if (isIdle()) {
        since_ = now;
    }
    ++underWay_;
}

bool CurlServer::mayConnect(const void* exchange, Time now) {
    if (!mayShare() || connecting_ == exchange) {
        return true;
    }
    if (connecting_ != nullptr) {
        return isSlow(now);
    }
    connecting_ = exchange;
    since_ = now;
    if (isConnected()) {
        mostNow_ = std::max(mostAlone, sent_);
        window_ = std::min(window_, mostNow_);
    }
    return true;
}

void CurlServer::send(const void* exchange, bool speaksHttp2) {
    ++sent_;
    protocol_ = speaksHttp2 ? Protocol::http2 : Protocol::http1;
    if (connecting_ == exchange) {
        connecting_ = nullptr;
    }
}

void CurlServer::end(const void* exchange, bool hasSent, bool isAnswered) {
    --underWay_;
    sent_ -= hasSent ? 1 : 0;
    if (connecting_ == exchange) {
        connecting_ = nullptr;
    }
    if (isAnswered && mayShare()) {
        window_ = std::min(window_ + 1, mostNow_);
    }
    if (isIdle()) {
        window_ = mostAlone;
        mostNow_ = mostShared;
    }
}

CurlServer& CurlServers::at(const std::string& name) {
    if (const auto known = servers_.find(name); known != servers_.end()) {
        return known->second;
    }
    if (servers_.size() >= mostKnown) {
        std::erase_if(servers_, [](const auto& server) { return server.second.isIdle(); });
    }
    return servers_.try_emplace(name, share_).first->second;
}

CurlServer::Time CurlServers::nextRoom(CurlServer::Time now) const {
    auto next = CurlServer::Time::max();
    for (const auto& [name, server] : servers_) {
        next = std::min(next, server.nextRoom(now));
    }
    return next;
}

} // namespace kivo::platform
