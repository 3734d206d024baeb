#pragma once

#include "support/TemporaryFolder.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

struct ssl_ctx_st;
struct bio_st;

namespace kivo::test {

/// What the server does with a request: bytes as they go on the wire, then filler bytes, then a flood, then what comes
/// after.
struct TestReply {
    /// `close` says goodbye first, `cut` only ends the connection. `renewKeys` sends new keys (TLS 1.3) over and over,
    /// until the client ends the connection.
    enum class After { keepOpen, close, cut, reset, hold, renewKeys };

    std::string bytes;
    After after = After::keepOpen;
    std::uint64_t filler = 0;
    /// Whether the server wants another handshake ahead of the filler.
    bool renegotiates = false;
    /// Frames that the server sends over and over, until the client ends the connection.
    std::string flood{};
};

/// A complete answer with its Content-Length.
inline TestReply reply(int status, const std::string& body = "", const std::string& headerLines = "") {
    return {"HTTP/1.1 " + std::to_string(status) + " Some reason\r\n" + headerLines +
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body};
}

/// An https server on a free loopback port that leaves every byte of an answer to its handler.
class TestTlsServer {
public:
    /// Receives a request as it came, head and body (over HTTP/2 the payloads of their frames). Called on the
    /// connection's thread.
    using Handler = std::function<TestReply(const std::string& request)>;

    enum class Protocol { tls, tls11, tls12, http2 };

    /// Presents the chain of a certificate, whether its parts fit together or not: by default one for "localhost" that
    /// is signed by itself.
    explicit TestTlsServer(Handler handler, Protocol protocol = Protocol::tls,
                           const simulator::IssuedCertificate& certificate = selfSigned());
    TestTlsServer(const TestTlsServer&) = delete;
    TestTlsServer& operator=(const TestTlsServer&) = delete;
    ~TestTlsServer();

    std::uint16_t port() const { return port_; }

    std::string url(const std::string& path = "/") const;

    /// The certificate in a file, to trust.
    const std::filesystem::path& certificateFile() const { return certificateFile_; }

    int connections() const { return connections_; }

    /// Handshakes that were completed, on both sides.
    int handshakes() const { return handshakes_; }

    /// Those of them that took an earlier session up.
    int resumptions() const { return resumptions_; }

    /// Connections that are over on the server's side.
    int ended() const { return ended_; }

    std::vector<std::string> requests() const;

private:
    class Connection;

    static simulator::IssuedCertificate selfSigned();
    void accept();
    void serve(Connection& connection);
    bool answer(Connection& connection, const std::string& request, std::uint32_t http2Stream);

    const Handler handler_;
    const Protocol protocol_;
    const TemporaryFolder folder_;
    const std::filesystem::path certificateFile_;
    std::shared_ptr<ssl_ctx_st> context_;
    std::shared_ptr<bio_st> listener_;
    std::uint16_t port_ = 0;
    std::atomic<int> connections_{0};
    std::atomic<int> handshakes_{0};
    std::atomic<int> resumptions_{0};
    std::atomic<int> ended_{0};
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::set<int> open_;
    std::list<std::thread> threads_;
    std::thread acceptor_;
};

} // namespace kivo::test
