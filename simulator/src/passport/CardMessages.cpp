#include "passport/CardMessages.hpp"

#include "passport/Tlv.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

namespace kivo::simulator::chip {
namespace {

constexpr std::size_t lengthSize = 2;

/// What a message of one byte asks of the reader.
enum class Control : std::uint8_t { powerOff = 0, powerOn = 1, reset = 2, answerToReset = 4 };

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

const sockaddr* generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

bool waitFor(short events, const Socket& socket, const std::stop_token& stop, const std::function<bool()>& goesOn) {
    // Neither the passport nor a stop has a descriptor to wait for.
    constexpr int glance = 20;
    while (!stop.stop_requested() && goesOn()) {
        pollfd ready{.fd = socket.descriptor(), .events = events, .revents = 0};
        const int count = poll(&ready, 1, glance);
        if (count > 0 || (count < 0 && errno != EINTR)) {
            return count > 0;
        }
    }
    return false;
}

/// Exactly that many bytes; absent when the other side closes first.
std::optional<Bytes> received(const Socket& socket, std::size_t count, const std::stop_token& stop,
                              const std::function<bool()>& goesOn) {
    Bytes bytes(count);
    for (std::size_t have = 0; have < count;) {
        if (!waitForBytes(socket, stop, goesOn)) {
            return std::nullopt;
        }
        const auto got = recv(socket.descriptor(), bytes.data() + have, count - have, 0);
        if (got <= 0) {
            return std::nullopt;
        }
        // The driver sends length and message apart, and the message only once the length is acknowledged, which the
        // system else puts off by 40 ms. The option lasts for one acknowledgement.
        const int yes = 1;
        setsockopt(socket.descriptor(), IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof yes);
        have += static_cast<std::size_t>(got);
    }
    return bytes;
}

/// A message without its length; absent when the other side closes, or sends one without bytes.
std::optional<Bytes> receivedMessage(const Socket& socket, const std::stop_token& stop,
                                     const std::function<bool()>& goesOn) {
    const auto head = received(socket, lengthSize, stop, goesOn);
    const auto length = head ? static_cast<std::size_t>((*head)[0] << 8U | (*head)[1]) : 0;
    return length == 0 ? std::nullopt : received(socket, length, stop, goesOn);
}

/// False when the other side closes, or does not read until the end.
bool send(const Socket& socket, View answer, const std::stop_token& stop, const std::function<bool()>& goesOn) {
    const auto message = joined({bigEndian(answer.size(), lengthSize), answer});
    for (std::size_t sent = 0; sent < message.size();) {
        if (!waitFor(POLLOUT, socket, stop, goesOn)) {
            return false;
        }
        const auto took =
            ::send(socket.descriptor(), message.data() + sent, message.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (took <= 0 && errno != EAGAIN) {
            return false;
        }
        sent += static_cast<std::size_t>(std::max<ssize_t>(took, 0));
    }
    return true;
}

} // namespace

Socket::Socket(Socket&& other) noexcept
    : descriptor_{std::exchange(other.descriptor_, -1)} {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

Socket::~Socket() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

Socket newSocket() {
    return Socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
}

Socket connectedTo(Socket socket, int port, const std::stop_token& stop) {
    const auto address = loopback(port);
    if (!socket || (connect(socket.descriptor(), generic(address), sizeof address) != 0 && errno != EINPROGRESS)) {
        return Socket{};
    }
    // A listener whose queue is full lets the other side wait.
    int error = 0;
    socklen_t size = sizeof error;
    if (!waitFor(POLLOUT, socket, stop, [] { return true; }) ||
        getsockopt(socket.descriptor(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0) {
        return Socket{};
    }
    const int yes = 1;
    setsockopt(socket.descriptor(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    fcntl(socket.descriptor(), F_SETFL, 0);
    return socket;
}

Socket listeningOn(int port) {
    Socket socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const auto address = loopback(port);
    const int yes = 1;
    setsockopt(socket.descriptor(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const bool listens = socket && bind(socket.descriptor(), generic(address), sizeof address) == 0 &&
                         listen(socket.descriptor(), SOMAXCONN) == 0;
    return listens ? std::move(socket) : Socket{};
}

int portOf(const Socket& socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(socket.descriptor(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

bool waitForBytes(const Socket& socket, const std::stop_token& stop, const std::function<bool()>& goesOn) {
    return waitFor(POLLIN, socket, stop, goesOn);
}

void serveReader(const Socket& socket, Passport& passport, const std::stop_token& stop,
                 const std::function<void()>& askedForReset) {
    const auto lies = [&] { return passport.isOnReader(); };
    for (;;) {
        const auto message = receivedMessage(socket, stop, lies);
        if (!message) {
            return;
        }
        if (message->size() > 1) {
            const auto answer = passport.transmit(*message, stop);
            if (answer.empty() || !send(socket, answer, stop, lies)) {
                return;
            }
            continue;
        }
        if (static_cast<Control>(message->front()) != Control::answerToReset) {
            passport.reset();
            continue;
        }
        if (!send(socket, passport.answerToReset(), stop, lies)) {
            return;
        }
        askedForReset();
    }
}

bool isAskedInVain(Socket socket, const Passport& passport, const std::stop_token& stop) {
    const auto first = receivedMessage(socket, stop, [&] { return passport.isOnReader(); });
    return first && first->size() == 1 && static_cast<Control>(first->front()) == Control::answerToReset;
}

} // namespace kivo::simulator::chip
