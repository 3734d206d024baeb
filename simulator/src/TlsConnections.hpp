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

/// The server's open TLS connections, and operations on a connection below HTTP.
///
/// One thread serves a connection from the handshake to the end. "The current connection" is the connection of the
/// calling thread.
class TlsConnections {
public:
    TlsConnections();
    TlsConnections(const TlsConnections&) = delete;
    TlsConnections& operator=(const TlsConnections&) = delete;
    ~TlsConnections();

    /// Notes the connections made from `context` from now on.
    void follow(SSL_CTX* context);

    /// The number of connections that completed their handshake.
    std::size_t handshakes() const { return handshakes_; }

    static std::uint64_t currentNumber();

    /// Sends bytes without HTTP over the current connection, then ends the connection.
    static void sendAndEnd(std::string_view bytes);

    /// Ends the current connection with a reset; nothing more can be sent on it.
    static void reset();

    /// Limits the bytes that the client of the current connection can send ahead of the reader to some hundred
    /// kilobytes.
    static void keepReceiveBufferSmall();

    /// How many bytes the client of the current connection may send from now on, those of TLS included. A connection
    /// whose client sends more ends. Before the first call a client may send `mostOfHead`.
    static void allow(std::size_t bytes);

    /// Enough for a handshake, or for a request line with its headers. The HTTP library alone would keep them in memory
    /// at any length.
    static constexpr std::size_t mostOfHead = std::size_t{64} * 1024;

    /// Waits until the client of the current connection hangs up, or `stop` is called.
    void waitForHangUp() const;

    /// Waits that long; false when `stop` is called first.
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
