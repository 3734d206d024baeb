#include "platform/curl/CurlSockets.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

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
    // The port has the same place in both.
    return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

// A connection that was reset has no peer any more.
bool leadsTo(curl_socket_t socket, std::string_view peer) {
    const auto address = addressFrom(::getpeername, socket);
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    const void* const bytes = address.ss_family == AF_INET6
                                  ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr)
                                  : &reinterpret_cast<const sockaddr_in&>(address).sin_addr;
    return address.ss_family == AF_UNSPEC ||
           (::inet_ntop(address.ss_family, bytes, buffer.data(), buffer.size()) != nullptr && peer == buffer.data());
}

} // namespace

curl_socket_t CurlSockets::open(const curl_sockaddr& address) {
    // The host may start programs; our connections are not for them.
    const auto socket = ::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
    if (socket >= 0) {
        open_.push_back(socket);
    }
    return socket;
}

void CurlSockets::close(curl_socket_t socket) {
    std::erase(open_, socket);
    ::close(socket);
}

bool CurlSockets::hasEnded(std::string_view peer, int localPort, bool isSilent) const {
    for (const auto socket : open_) {
        if (portOf(addressFrom(::getsockname, socket)) == localPort && leadsTo(socket, peer)) {
            pollfd one{.fd = socket, .events = POLLIN | POLLRDHUP, .revents = 0};
            return ::poll(&one, 1, 0) > 0 && (isSilent || (one.revents & ~POLLIN) != 0);
        }
    }
    return false;
}

} // namespace kivo::platform
