#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The server's open TLS connections, and what can be done to one below HTTP.
///
/// A connection is served by one thread from its handshake to its end; "the current connection" is that thread's.
class TlsConnections {
public:
    TlsConnections();
    TlsConnections(const TlsConnections&) = delete;
    TlsConnections& operator=(const TlsConnections&) = delete;
    ~TlsConnections();

    /// Notes the connections made from `context` from now on.
    void follow(SSL_CTX* context);

    /// How many connections completed their handshake.
    std::size_t handshakes() const { return handshakes_; }

    static std::uint64_t currentNumber();

    /// Sends bytes as they are over the current connection, then ends it.
    static void sendAndEnd(std::string_view bytes);

    /// Ends the current connection with a reset; nothing more can be sent on it.
    static void reset();

    /// Lets the client of the current connection run ahead of what is read by some hundred kilobytes only.
    static void keepReceiveBufferSmall();

    /// Waits until the client of the current connection hangs up, or everything stops.
    void waitForHangUp() const;

    /// Waits that long; false when everything stops first.
    bool wait(std::chrono::nanoseconds time) const;

    /// Closes all connections that are open.
    void closeAll();

    /// Ends every wait from now on.
    void stop();

private:
    struct Connection;

    static void onInfo(const SSL* ssl, int where, int result);
    static void onFree(void* parent, void* connection, CRYPTO_EX_DATA* data, int index, long argument, void* pointer);

    const int stopped_;
    std::atomic<std::uint64_t> count_ = 0;
    std::atomic<std::size_t> handshakes_ = 0;
    std::mutex mutex_;
    std::set<int> open_;
};

} // namespace kivo::simulator
