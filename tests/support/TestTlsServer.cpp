#include "support/TestTlsServer.hpp"

#include "platform/openssl/OpenSslObjects.hpp"
#include "support/Http2Frames.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <arpa/inet.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

namespace kivo::test {
namespace {

constexpr int pollMs = 10;

using platform::derOf;
using platform::KeyPointer;
using platform::OpenSslFree;
using platform::X509Pointer;
using Memory = std::unique_ptr<BIO, OpenSslFree<BIO_free>>;

Memory memoryOf(const std::string& text) {
    return Memory{BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))};
}

std::size_t bodyLength(const std::string& head) {
    auto lower = head;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto at = lower.find("\r\ncontent-length:");
    return at == lower.npos ? 0 : std::strtoull(lower.c_str() + at + 17, nullptr, 10);
}

} // namespace

struct TestTlsServer::Context {
    std::unique_ptr<SSL_CTX, OpenSslFree<SSL_CTX_free>> tls{SSL_CTX_new(TLS_server_method())};
};

// One connection, with or without TLS; its descriptor does not block, so that stopping is noticed.
struct TestTlsServer::Stream {
    Stream(const std::atomic<bool>& stopping, int descriptor)
        : stopping_{stopping}
        , descriptor_{descriptor} {}

    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    ~Stream() {
        ssl_.reset();
        ::close(descriptor_);
    }

    bool handshake(SSL_CTX* context) {
        ssl_.reset(SSL_new(context));
        SSL_set_fd(ssl_.get(), descriptor_);
        return insist([&] { return SSL_accept(ssl_.get()); }) > 0;
    }

    int read(char* buffer, int size) {
        return insist([&] {
            return ssl_ ? SSL_read(ssl_.get(), buffer, size)
                        : static_cast<int>(::recv(descriptor_, buffer, static_cast<std::size_t>(size), 0));
        });
    }

    bool readMore(std::string& received) {
        std::array<char, 1 << 14> buffer{};
        const int count = read(buffer.data(), static_cast<int>(buffer.size()));
        received.append(buffer.data(), static_cast<std::size_t>(std::max(count, 0)));
        return count > 0;
    }

    bool write(const char* bytes, std::size_t size) {
        while (size > 0) {
            const int part = insist([&] {
                return ssl_ ? SSL_write(ssl_.get(), bytes, static_cast<int>(std::min<std::size_t>(size, 1 << 16)))
                            : static_cast<int>(::send(descriptor_, bytes, size, MSG_NOSIGNAL));
            });
            if (part <= 0) {
                return false;
            }
            bytes += part;
            size -= static_cast<std::size_t>(part);
        }
        return true;
    }

    void resetOnClose() {
        const linger none{1, 0};
        ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }

    void shutdown() {
        if (ssl_) {
            SSL_shutdown(ssl_.get());
        }
    }

    bool wasResumed() const { return SSL_session_reused(ssl_.get()) == 1; }

    void renegotiate() {
        SSL_renegotiate(ssl_.get());
        insist([&] { return SSL_do_handshake(ssl_.get()); });
    }

    // Until the peer leaves, or the server stops.
    void hold() {
        char byte = 0;
        while (read(&byte, 1) > 0) {
        }
    }

private:
    template <typename Act>
    int insist(const Act& act) {
        while (!stopping_) {
            const int result = act();
            if (result > 0) {
                return result;
            }
            short events = POLLIN;
            if (ssl_) {
                const int error = SSL_get_error(ssl_.get(), result);
                if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) {
                    return result;
                }
                events = error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT;
            } else if (result == 0 || errno != EAGAIN) {
                return result;
            }
            pollfd one{descriptor_, events, 0};
            ::poll(&one, 1, pollMs);
        }
        return -1;
    }

    const std::atomic<bool>& stopping_;
    const int descriptor_;
    std::unique_ptr<SSL, OpenSslFree<SSL_free>> ssl_;
};

TestTlsServer::TestTlsServer(Handler handler, Protocol protocol)
    : handler_{std::move(handler)}
    , protocol_{protocol}
    , context_{std::make_unique<Context>()} {
    const auto issued = simulator::CertificateAuthority{}.issue(
        {.names = {"localhost"}, .keyType = simulator::KeyType::ec256, .flaw = simulator::CertificateFlaw::selfSigned});
    certificateFile_ = folder_.write("certificate.pem", issued.chain);
    present(issued.chain, issued.privateKey);
    start();
}

TestTlsServer::TestTlsServer(Handler handler, const std::string& chain, const std::string& privateKey)
    : handler_{std::move(handler)}
    , protocol_{Protocol::tls}
    , context_{std::make_unique<Context>()} {
    present(chain, privateKey);
    start();
}

TestTlsServer::~TestTlsServer() {
    stopping_ = true;
    acceptor_.join();
    for (auto& thread : threads_) {
        thread.join();
    }
    ::close(listener_);
}

std::string TestTlsServer::url(const std::string& path) const {
    return "https://localhost:" + std::to_string(port_) + path;
}

std::vector<std::string> TestTlsServer::requests() const {
    const std::scoped_lock lock{mutex_};
    return requests_;
}

void TestTlsServer::present(const std::string& chain, const std::string& privateKey) {
    const auto certificates = memoryOf(chain);
    const auto next = [&] { return X509Pointer{PEM_read_bio_X509(certificates.get(), nullptr, nullptr, nullptr)}; };
    const auto leaf = next();
    SSL_CTX_use_certificate(context_->tls.get(), leaf.get());
    certificate_ = derOf(leaf.get(), i2d_X509);
    for (auto above = next(); above; above = next()) {
        SSL_CTX_add1_chain_cert(context_->tls.get(), above.get());
    }
    const KeyPointer key{PEM_read_bio_PrivateKey(memoryOf(privateKey).get(), nullptr, nullptr, nullptr)};
    SSL_CTX_use_PrivateKey(context_->tls.get(), key.get());
}

void TestTlsServer::start() {
    auto* const context = context_->tls.get();
    if (protocol_ == Protocol::tls11 || protocol_ == Protocol::tls12) {
        SSL_CTX_set_max_proto_version(context, protocol_ == Protocol::tls11 ? TLS1_1_VERSION : TLS1_2_VERSION);
        SSL_CTX_set_min_proto_version(context, TLS1_VERSION);
        SSL_CTX_set_cipher_list(context, "ALL:@SECLEVEL=0");
    } else if (protocol_ == Protocol::http2) {
        SSL_CTX_set_alpn_select_cb(
            context,
            [](SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char*, unsigned int, void*) {
                *chosen = reinterpret_cast<const unsigned char*>("h2");
                *size = 2;
                return SSL_TLSEXT_ERR_OK;
            },
            nullptr);
    }
    ::signal(SIGPIPE, SIG_IGN);
    listen();
    acceptor_ = std::thread{[this] { accept(); }};
}

void TestTlsServer::listen() {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener_, 64) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error{"cannot listen on the loopback interface"};
    }
    port_ = ntohs(address.sin_port);
}

void TestTlsServer::accept() {
    while (!stopping_) {
        pollfd one{listener_, POLLIN, 0};
        ::poll(&one, 1, pollMs);
        const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor >= 0) {
            ++connections_;
            threads_.emplace_back([this, descriptor] { serve(descriptor); });
        }
    }
}

void TestTlsServer::serve(int descriptor) {
    {
        Stream stream{stopping_, descriptor};
        if (protocol_ == Protocol::plain) {
            serveHttp1(stream);
        } else if (stream.handshake(context_->tls.get())) {
            ++handshakes_;
            resumptions_ += stream.wasResumed() ? 1 : 0;
            protocol_ == Protocol::http2 ? serveHttp2(stream) : serveHttp1(stream);
        }
    }
    ++ended_;
}

void TestTlsServer::serveHttp1(Stream& stream) {
    std::string received;
    while (true) {
        const auto headEnd = received.find("\r\n\r\n");
        const auto size = headEnd == received.npos ? 0 : headEnd + 4 + bodyLength(received.substr(0, headEnd));
        // A plain server answers whatever comes: what comes is a TLS greeting.
        const bool isGreeting = protocol_ == Protocol::plain && !received.empty();
        if (isGreeting || (size > 0 && received.size() >= size)) {
            const auto request = isGreeting ? std::exchange(received, {}) : received.substr(0, size);
            received.erase(0, size);
            if (!answer(stream, request)) {
                return;
            }
        } else if (!stream.readMore(received)) {
            return;
        }
    }
}

void TestTlsServer::serveHttp2(Stream& stream) {
    std::string received;
    while (received.size() < http2::prefaceSize) {
        if (!stream.readMore(received)) {
            return;
        }
    }
    received.erase(0, http2::prefaceSize);
    const auto greeting = http2::settings();
    bool isOpen = stream.write(greeting.data(), greeting.size());
    std::map<std::uint32_t, std::string> requests;
    while (isOpen) {
        const auto frame = http2::takeFrame(received);
        if (!frame) {
            isOpen = stream.readMore(received);
        } else if (frame->isOfRequest()) {
            auto& request = requests[frame->stream];
            request += frame->payload;
            isOpen = !frame->isLast() || answer(stream, request, frame->stream);
        }
    }
}

bool TestTlsServer::answer(Stream& stream, const std::string& request, std::uint32_t http2Stream) {
    {
        const std::scoped_lock lock{mutex_};
        requests_.push_back(request);
    }
    const auto reply = handler_(request);
    const auto bytes = http2Stream == 0 ? reply.bytes : http2::onStream(reply.bytes, http2Stream);
    if (!stream.write(bytes.data(), bytes.size())) {
        return false;
    }
    if (reply.renegotiates) {
        stream.renegotiate();
    }
    static const std::string filler(1 << 16, 'x');
    for (std::uint64_t left = reply.filler; left > 0;) {
        const auto part = std::min<std::uint64_t>(left, filler.size());
        if (!stream.write(filler.data(), part)) {
            return false;
        }
        left -= part;
    }
    switch (reply.after) {
    case TestReply::After::keepOpen:
        return true;
    case TestReply::After::close:
        stream.shutdown();
        return false;
    case TestReply::After::cut:
        return false;
    case TestReply::After::reset:
        stream.resetOnClose();
        return false;
    case TestReply::After::hold:
        stream.hold();
        return false;
    }
    return false;
}

} // namespace kivo::test
