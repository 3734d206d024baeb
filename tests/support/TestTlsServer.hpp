#pragma once

#include "support/TemporaryFolder.hpp"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kivo::test {

/// What the server does with a request: bytes as they go on the wire, then filler bytes, then what comes after.
struct TestReply {
    /// `close` says goodbye first, `cut` only ends the connection.
    enum class After { keepOpen, close, cut, reset, hold };

    std::string bytes;
    After after = After::keepOpen;
    std::uint64_t filler = 0;
    /// Whether the server wants another handshake ahead of the filler.
    bool renegotiates = false;
};

/// A complete answer with its Content-Length.
inline TestReply reply(int status, const std::string& body = "", const std::string& headerLines = "") {
    return {"HTTP/1.1 " + std::to_string(status) + " Some reason\r\n" + headerLines +
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body};
}

/// An https server on a free loopback port that leaves every byte of an answer to its handler.
///
/// Its certificate, for "localhost", is made at start and signed by itself.
class TestTlsServer {
public:
    /// Receives a request as it came, head and body (over HTTP/2 the payloads of their frames). Called on the
    /// connection's thread.
    using Handler = std::function<TestReply(const std::string& request)>;

    enum class Protocol { tls, tls11, tls12, http2, plain };

    explicit TestTlsServer(Handler handler, Protocol protocol = Protocol::tls);
    /// Presents the certificates of `chain`, whether they fit together or not, the first of them with its key (PEM).
    TestTlsServer(Handler handler, const std::string& chain, const std::string& privateKey);
    TestTlsServer(const TestTlsServer&) = delete;
    TestTlsServer& operator=(const TestTlsServer&) = delete;
    ~TestTlsServer();

    std::uint16_t port() const { return port_; }

    std::string url(const std::string& path = "/") const;

    /// The certificate in a file, to trust.
    const std::filesystem::path& certificateFile() const { return certificateFile_; }

    /// The certificate in DER form.
    const std::string& certificate() const { return certificate_; }

    int connections() const { return connections_; }

    /// Handshakes that were completed, on both sides.
    int handshakes() const { return handshakes_; }

    /// Those of them that took an earlier session up.
    int resumptions() const { return resumptions_; }

    /// Connections that are over on the server's side.
    int ended() const { return ended_; }

    std::vector<std::string> requests() const;

private:
    struct Context;
    struct Stream;

    void present(const std::string& chain, const std::string& privateKey);
    void start();
    void listen();
    void accept();
    void serve(int descriptor);
    void serveHttp1(Stream& stream);
    void serveHttp2(Stream& stream);
    bool answer(Stream& stream, const std::string& request, std::uint32_t http2Stream = 0);

    const Handler handler_;
    const Protocol protocol_;
    std::unique_ptr<Context> context_;
    const TemporaryFolder folder_;
    std::filesystem::path certificateFile_;
    std::string certificate_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<bool> stopping_{false};
    std::atomic<int> connections_{0};
    std::atomic<int> handshakes_{0};
    std::atomic<int> resumptions_{0};
    std::atomic<int> ended_{0};
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::list<std::thread> threads_;
    std::thread acceptor_;
};

} // namespace kivo::test
