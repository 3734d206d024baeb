#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <string>

namespace kivo::platform {

/// How many requests to one server may be under way, and who of them may make a connection. For one thread.
///
/// A server that speaks HTTP/1.1 gets six requests at once, each over a connection of its own. Where requests share
/// connections, the first request goes alone until its connection shows which protocol the server speaks. Over HTTP/2
/// the others follow on the same connection: six at first, and one more for each answer, up to `mostShared`. By the
/// first answer the server has said how many streams it allows. Beyond that number libcurl makes a further connection,
/// and then the server gets no more requests at once than it has.
class CurlServer {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::ptrdiff_t mostAlone = 6;
    static constexpr std::ptrdiff_t mostShared = 32;
    /// A connection that takes longer to be made no longer holds up the other requests.
    static constexpr std::chrono::milliseconds patience{500};

    /// `shares`: whether requests share a connection on which the server speaks HTTP/2.
    explicit CurlServer(bool shares)
        : shares_{shares} {}

    bool isIdle() const { return underWay_ == 0; }

    /// Whether a request is under way over a connection that was good when the request left.
    bool isConnected() const { return sent_ > 0; }

    /// Whether the requests may share a connection, as far as is known.
    bool mayShare() const { return shares_ && protocol_ != Protocol::http1; }

    /// Whether several requests are under way over one connection.
    bool isShared() const { return protocol_ == Protocol::http2 && sent_ > 1; }

    /// Whether a further request may begin.
    bool hasRoom(Time now) const;

    /// The time after `now` at which there is room although no request has ended; `Time::max()` when there is none.
    Time nextRoom(Time now) const;

    // The way of one exchange, which `exchange` names: it begins, may make a connection, sends, and ends.

    void begin(Time now);
    bool mayConnect(const void* exchange, Time now);
    void send(const void* exchange, bool speaksHttp2);
    void end(const void* exchange, bool hasSent, bool isAnswered);

private:
    enum class Protocol { unknown, http1, http2 };

    /// Whether the other requests wait for one that has yet to show whether they can share its connection.
    bool isWaitedFor() const { return mayShare() && !isIdle() && (!isConnected() || connecting_ != nullptr); }

    bool isSlow(Time now) const { return now >= since_ + patience; }

    const bool shares_;
    Protocol protocol_ = Protocol::unknown;
    std::ptrdiff_t underWay_ = 0;
    std::ptrdiff_t sent_ = 0;
    std::ptrdiff_t window_ = mostAlone;
    std::ptrdiff_t mostNow_ = mostShared;
    /// The exchange that makes a connection.
    const void* connecting_ = nullptr;
    /// The time at which the exchange began for which the others wait.
    Time since_;
};

/// The servers of one engine, by the name that `CurlTransfer::server()` gives. For one thread.
class CurlServers {
public:
    explicit CurlServers(bool share)
        : share_{share} {}

    /// The server stays where it is until it has no request under way.
    CurlServer& at(const std::string& name);

    /// Whether requests share a connection now.
    bool share() const {
        return std::ranges::any_of(servers_, [](const auto& server) { return server.second.isShared(); });
    }

    /// The time after `now` at which a server has room again; `Time::max()` when none does.
    CurlServer::Time nextRoom(CurlServer::Time now) const;

private:
    const bool share_;
    std::map<std::string, CurlServer> servers_;
};

} // namespace kivo::platform
