#include "support/TestTlsServer.hpp"

#include "platform/openssl/OpenSslObjects.hpp"
#include "support/Http2Frames.hpp"

#include <fcntl.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kivo::test {
namespace {

using http2::Request;

/// Takes the first request, head and body, away; absent when it has not come wholly.
std::optional<Request> takeRequest(std::string& received) {
    const auto headEnd = received.find("\r\n\r\n");
    auto head = received.substr(0, headEnd);
    std::ranges::transform(head, head.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::string_view lengthName = "\r\ncontent-length:";
    const auto length = head.find(lengthName);
    const auto body = length == head.npos ? 0 : std::stoull(head.substr(length + lengthName.size()));
    if (headEnd == received.npos || received.size() < headEnd + 4 + body) {
        return std::nullopt;
    }
    Request request{received.substr(0, headEnd + 4 + body)};
    received.erase(0, request.bytes.size());
    return request;
}

} // namespace

/// One connection.
class TestTlsServer::Connection {
public:
    Connection(int descriptor, SSL_CTX* context)
        : bytes_{BIO_push(BIO_new_ssl(context, /*client=*/0), BIO_new_socket(descriptor, BIO_CLOSE))}
        , descriptor_{descriptor} {
        BIO_get_ssl(bytes_.get(), &ssl_);
        // Otherwise each connection says goodbye at its end, and waits for an answer.
        SSL_set_quiet_shutdown(ssl_, 1);
    }

    bool handshake() { return BIO_do_handshake(bytes_.get()) > 0; }

    bool wasResumed() const { return SSL_session_reused(ssl_) == 1; }

    bool readMore(std::string& received) {
        std::array<char, 1 << 14> buffer{};
        const int count = BIO_read(bytes_.get(), buffer.data(), static_cast<int>(buffer.size()));
        received.append(buffer.data(), static_cast<std::size_t>(std::max(count, 0)));
        return count > 0;
    }

    bool write(std::string_view text) {
        std::size_t written = 0;
        return text.empty() || (BIO_write_ex(bytes_.get(), text.data(), text.size(), &written) == 1 && written > 0);
    }

    void renegotiate() {
        SSL_renegotiate(ssl_);
        SSL_do_handshake(ssl_);
    }

    void end(TestReply::After how) {
        if (how == TestReply::After::hold) {
            for (std::string ignored; readMore(ignored);) {
            }
        } else if (how == TestReply::After::reset) {
            const linger none{1, 0};
            ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        } else if (how == TestReply::After::close) {
            SSL_set_quiet_shutdown(ssl_, 0);
            SSL_shutdown(ssl_);
            SSL_set_quiet_shutdown(ssl_, 1);
        } else if (how == TestReply::After::renewKeys) {
            while (SSL_key_update(ssl_, SSL_KEY_UPDATE_NOT_REQUESTED) == 1 && SSL_do_handshake(ssl_) == 1) {
            }
        }
    }

private:
    std::unique_ptr<BIO, platform::OpenSslFree<BIO_free_all>> bytes_;
    SSL* ssl_ = nullptr;
    const int descriptor_;
};

simulator::IssuedCertificate TestTlsServer::selfSigned() {
    return simulator::CertificateAuthority{}.issue(
        {.names = {"localhost"}, .keyType = simulator::KeyType::ec256, .flaw = simulator::CertificateFlaw::selfSigned});
}

TestTlsServer::TestTlsServer(Handler handler, Protocol protocol, const simulator::IssuedCertificate& certificate)
    : handler_{std::move(handler)}
    , protocol_{protocol}
    , certificateFile_{folder_.write("certificate.pem", certificate.chain)}
    , context_{SSL_CTX_new(TLS_server_method()), SSL_CTX_free}
    , listener_{BIO_new_accept("127.0.0.1:0"), BIO_free_all} {
    auto* const context = context_.get();
    const auto key = folder_.write("key.pem", certificate.privateKey);
    if (SSL_CTX_use_certificate_chain_file(context, certificateFile_.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1 ||
        BIO_do_accept(listener_.get()) != 1) {
        throw std::runtime_error{"cannot serve on the loopback interface"};
    }
    if (protocol_ == Protocol::tls11 || protocol_ == Protocol::tls12) {
        SSL_CTX_set_max_proto_version(context, protocol_ == Protocol::tls11 ? TLS1_1_VERSION : TLS1_2_VERSION);
        SSL_CTX_set_min_proto_version(context, TLS1_VERSION);
        SSL_CTX_set_cipher_list(context, "ALL:@SECLEVEL=0");
    } else if (protocol_ == Protocol::http2) {
        const auto choose = [](SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char*,
                               unsigned int, void*) {
            *chosen = reinterpret_cast<const unsigned char*>("h2");
            *size = 2;
            return SSL_TLSEXT_ERR_OK;
        };
        SSL_CTX_set_alpn_select_cb(context, choose, nullptr);
    }
    ::fcntl(static_cast<int>(BIO_get_fd(listener_.get(), nullptr)), F_SETFD, FD_CLOEXEC);
    std::signal(SIGPIPE, SIG_IGN);
    port_ = static_cast<std::uint16_t>(std::stoi(BIO_get_accept_port(listener_.get())));
    acceptor_ = std::thread{[this] { accept(); }};
}

/// Shutting a descriptor down wakes the thread that waits on it.
TestTlsServer::~TestTlsServer() {
    ::shutdown(static_cast<int>(BIO_get_fd(listener_.get(), nullptr)), SHUT_RDWR);
    acceptor_.join();
    {
        const std::scoped_lock lock{mutex_};
        for (const int descriptor : open_) {
            ::shutdown(descriptor, SHUT_RDWR);
        }
    }
    for (auto& thread : threads_) {
        thread.join();
    }
}

std::string TestTlsServer::url(const std::string& path) const {
    return "https://localhost:" + std::to_string(port_) + path;
}

std::vector<std::string> TestTlsServer::requests() const {
    const std::scoped_lock lock{mutex_};
    return requests_;
}

void TestTlsServer::accept() {
    const auto listener = static_cast<int>(BIO_get_fd(listener_.get(), nullptr));
    const auto next = [&] { return ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC); };
    for (int descriptor = next(); descriptor >= 0; descriptor = next()) {
        ++connections_;
        const std::scoped_lock lock{mutex_};
        open_.insert(descriptor);
        threads_.emplace_back([this, descriptor] {
            {
                Connection connection{descriptor, context_.get()};
                serve(connection);
                const std::scoped_lock beforeItIsClosed{mutex_};
                open_.erase(descriptor);
            }
            ++ended_;
        });
    }
}

void TestTlsServer::serve(Connection& connection) {
    bool isOpen = connection.handshake();
    handshakes_ += isOpen ? 1 : 0;
    resumptions_ += isOpen && connection.wasResumed() ? 1 : 0;
    std::string received;
    if (protocol_ == Protocol::http2) {
        while (isOpen && received.size() < http2::prefaceSize) {
            isOpen = connection.readMore(received);
        }
        received.erase(0, http2::prefaceSize);
        isOpen = isOpen && connection.write(http2::settings());
    }
    std::map<std::uint32_t, std::string> begun;
    while (isOpen) {
        const auto request = protocol_ == Protocol::http2 ? http2::takeRequest(received, begun) : takeRequest(received);
        isOpen = request ? answer(connection, request->bytes, request->stream) : connection.readMore(received);
    }
}

bool TestTlsServer::answer(Connection& connection, const std::string& request, std::uint32_t http2Stream) {
    {
        const std::scoped_lock lock{mutex_};
        requests_.push_back(request);
    }
    const auto reply = handler_(request);
    const auto onWire = [&](const std::string& bytes) {
        return http2Stream == 0 ? bytes : http2::onStream(bytes, http2Stream);
    };
    if (!connection.write(onWire(reply.bytes))) {
        return false;
    }
    if (reply.renegotiates) {
        connection.renegotiate();
    }
    static const std::string filler(1 << 16, 'x');
    for (auto left = reply.filler; left > 0; left -= std::min<std::uint64_t>(left, filler.size())) {
        if (!connection.write(std::string_view{filler}.substr(0, left))) {
            return false;
        }
    }
    if (const auto flood = onWire(reply.flood); !flood.empty()) {
        while (connection.write(flood)) {
        }
        return false;
    }
    connection.end(reply.after);
    return reply.after == TestReply::After::keepOpen;
}

} // namespace kivo::test
