#include "platform/curl/CurlConnections.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace kivo::platform {
namespace {

using AddressOf = int (*)(int, sockaddr*, socklen_t*);

sockaddr_storage addressFrom(AddressOf read, curl_socket_t socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (read(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        address.ss_family = AF_UNSPEC;
    }
    return address;
}

int portOf(const sockaddr_storage& address) {
    // The port has the same place in the addresses of both families.
    return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

// Empty without an address: a connection that was reset has no peer any more.
std::string hostOf(const sockaddr_storage& address) {
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    const void* const bytes = address.ss_family == AF_INET6
                                  ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr)
                                  : &reinterpret_cast<const sockaddr_in&>(address).sin_addr;
    const bool isKnown = address.ss_family != AF_UNSPEC &&
                         ::inet_ntop(address.ss_family, bytes, buffer.data(), buffer.size()) != nullptr;
    return isKnown ? buffer.data() : "";
}

bool speaksHttp2(const SSL* tls) {
    const unsigned char* name = nullptr;
    unsigned int size = 0;
    if (tls != nullptr) {
        SSL_get0_alpn_selected(tls, &name, &size);
    }
    return size == 2 && name[0] == 'h' && name[1] == '2';
}

/// Half of the request's time, so that a request that is lost with the network does not take the next request along. In
/// less than two seconds, a few lost packets would end a good connection. After a minute, an exchange has stood still
/// for as long as the longest exchanges may.
std::chrono::milliseconds patienceFor(std::chrono::milliseconds timeout) {
    using namespace std::chrono_literals;
    return std::clamp<std::chrono::milliseconds>(timeout / 2, 2s, 60s);
}

} // namespace

curl_socket_t CurlSockets::open(const curl_sockaddr& address) {
    // Programs that the host starts must not inherit the connections.
    const auto socket = ::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
    if (socket >= 0) {
        open_.push_back({.socket = socket});
    }
    return socket;
}

void CurlSockets::close(curl_socket_t socket) {
    std::erase_if(open_, [socket](const Open& open) { return open.socket == socket; });
    ::close(socket);
}

void CurlSockets::limitSilence(std::string_view peer, int localPort, std::chrono::milliseconds patience) {
    const auto milliseconds = static_cast<unsigned int>(patience.count());
    ::setsockopt(find(peer, localPort), IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds, sizeof milliseconds);
}

bool CurlSockets::hasEnded(std::string_view peer, int localPort, bool isSilent) {
    // A negative descriptor is never ready.
    pollfd one{.fd = find(peer, localPort), .events = POLLIN | POLLRDHUP, .revents = 0};
    return ::poll(&one, 1, 0) > 0 && (isSilent || (one.revents & ~POLLIN) != 0);
}

void CurlSockets::waitForBytes(int wake, std::chrono::milliseconds longest) const {
    std::vector<pollfd> polled{{.fd = wake, .events = POLLIN, .revents = 0}};
    for (const auto& open : open_) {
        polled.push_back({.fd = open.socket, .events = POLLIN, .revents = 0});
    }
    ::poll(polled.data(), polled.size(), static_cast<int>(longest.count()));
}

curl_socket_t CurlSockets::find(std::string_view peer, int localPort) {
    for (auto& open : open_) {
        if (open.peer.empty()) {
            open.localPort = portOf(addressFrom(::getsockname, open.socket));
            open.peer = hostOf(addressFrom(::getpeername, open.socket));
        }
        if (open.localPort == localPort && (open.peer.empty() || open.peer == peer)) {
            return open.socket;
        }
    }
    return CURL_SOCKET_BAD;
}

void CurlSending::watch(CurlOptions& options) {
    options.set(CURLOPT_OPENSOCKETDATA, this);
    options.set(
        CURLOPT_OPENSOCKETFUNCTION, +[](void* self, curlsocktype, curl_sockaddr* address) -> curl_socket_t {
            auto& sending = *static_cast<CurlSending*>(self);
            return sending.mayConnect() ? sending.sockets_.open(*address) : CURL_SOCKET_BAD;
        });
    // Connections outlive the exchange that made them, and so do the sockets.
    options.set(CURLOPT_CLOSESOCKETDATA, &sockets_);
    options.set(
        CURLOPT_CLOSESOCKETFUNCTION, +[](void* sockets, curl_socket_t socket) {
            static_cast<CurlSockets*>(sockets)->close(socket);
            return 0;
        });
    options.set(CURLOPT_PREREQDATA, this);
    options.set(
        CURLOPT_PREREQFUNCTION, +[](void* self, char* peer, char*, int, int localPort) {
            const bool maySend = static_cast<CurlSending*>(self)->maySend(peer, localPort);
            return maySend ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
        });
}

void CurlSending::end(bool isAnswered) {
    if (auto* const server = std::exchange(server_, nullptr)) {
        server->end(this, hasSent_, isAnswered);
    }
}

bool CurlSending::hasLeft() const {
    return sentBefore_ && info<long>(CURLINFO_REQUEST_SIZE) > *sentBefore_;
}

bool CurlSending::mayConnect() {
    wouldRepeat_ = wouldRepeat_ || hasLeft();
    sentBefore_.reset();
    mustWait_ = !wouldRepeat_ && !server_->mayConnect(this, std::chrono::steady_clock::now());
    return !wouldRepeat_ && !mustWait_;
}

bool CurlSending::maySend(std::string_view peer, int localPort) {
    wouldRepeat_ = wouldRepeat_ || hasLeft();
    const bool isReused = info<long>(CURLINFO_NUM_CONNECTS) == 0;
    const auto* const session = info<curl_tlssessioninfo*>(CURLINFO_TLS_SSL_PTR);
    auto* const tls = session != nullptr ? static_cast<SSL*>(session->internals) : nullptr;
    const bool isHttp2 = speaksHttp2(tls);
    if (tls != nullptr) {
        sockets_.turns().watch(tls);
    }
    if (!isReused) {
        sockets_.limitSilence(peer, localPort, patienceFor(timeout_));
    } else if (!wouldRepeat_) {
        // On HTTP/2 the server may speak without being asked.
        isConnectionOver_ = sockets_.hasEnded(peer, localPort, !isHttp2);
    }
    sentBefore_ = info<long>(CURLINFO_REQUEST_SIZE);
    const bool maySend = !wouldRepeat_ && !isConnectionOver_;
    if (maySend && !std::exchange(hasSent_, true)) {
        server_->send(this, isHttp2);
    }
    return maySend;
}

} // namespace kivo::platform
