#pragma once

#include "platform/curl/CurlHandles.hpp"
#include "platform/curl/CurlServers.hpp"
#include "platform/curl/CurlTurns.hpp"

#include <curl/curl.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// The sockets of one engine's connections. Engine's thread.
class CurlSockets {
public:
    curl_socket_t open(const curl_sockaddr& address);
    void close(curl_socket_t socket);

    bool isEmpty() const { return open_.empty(); }

    CurlTurns& turns() { return turns_; }

    /// Ends the connection from `localPort` to `peer` when the server leaves bytes unconfirmed for `patience`.
    /// Otherwise the kernel tries a dead connection for a quarter of an hour, and every request on the connection
    /// waits.
    void limitSilence(std::string_view peer, int localPort, std::chrono::milliseconds patience);

    /// Whether the server has ended the connection from `localPort` to `peer`. With `isSilent`, any byte that the
    /// server sends unasked counts as the end as well. libcurl notices neither: libcurl takes the alert that closes a
    /// connection for a sign of life.
    bool hasEnded(std::string_view peer, int localPort, bool isSilent);

    /// Waits until a server has sent something, the descriptor `wake` can be read, or the time is up. A negative
    /// descriptor is left out.
    void waitForBytes(int wake, std::chrono::milliseconds longest) const;

private:
    struct Open {
        curl_socket_t socket;
        /// Where the connection leads, read when the connection is first looked for. Empty without a connection.
        std::string peer{};
        int localPort = 0;
    };

    /// The socket from `localPort` to `peer`; CURL_SOCKET_BAD for none.
    curl_socket_t find(std::string_view peer, int localPort);

    std::vector<Open> open_;
    CurlTurns turns_;
};

/// Watches over one exchange, so that its request leaves at most once and never over a connection that has ended.
///
/// libcurl sends a request again when a connection that was used before ends without an answer. The client cannot know
/// then whether the server has read the request. The object must not move while the exchange runs. Engine's thread.
class CurlSending {
public:
    /// `timeout`: the time for the whole request.
    CurlSending(CURL* easy, std::chrono::milliseconds timeout, CurlSockets& sockets, CurlServer& server)
        : easy_{easy}
        , timeout_{timeout}
        , sockets_{sockets}
        , server_{&server} {
        server.begin(std::chrono::steady_clock::now());
    }

    CurlSending(const CurlSending&) = delete;
    CurlSending& operator=(const CurlSending&) = delete;

    void watch(CurlOptions& options);

    /// Whether the exchange ended because libcurl was about to send again.
    bool wouldRepeat() const { return wouldRepeat_; }

    /// Whether the exchange ended before a byte of the request had left, because the server had ended the connection.
    bool isConnectionOver() const { return isConnectionOver_; }

    /// Whether the exchange ended without a connection of its own, so that it can share the connection that another
    /// request is making.
    bool mustWait() const { return mustWait_; }

    /// Makes room at the server for another request. Further calls do nothing.
    void end(bool isAnswered);

private:
    bool hasLeft() const;
    bool mayConnect();
    bool maySend(std::string_view peer, int localPort);

    template <typename T>
    T info(CURLINFO which) const {
        T value{};
        curl_easy_getinfo(easy_, which, &value);
        return value;
    }

    CURL* const easy_;
    const std::chrono::milliseconds timeout_;
    CurlSockets& sockets_;
    /// Null once the exchange has ended.
    CurlServer* server_;
    /// The number of bytes sent, to a proxy for example, before the request itself was about to leave.
    std::optional<long> sentBefore_;
    bool wouldRepeat_ = false;
    bool isConnectionOver_ = false;
    bool mustWait_ = false;
    bool hasSent_ = false;
};

} // namespace kivo::platform
