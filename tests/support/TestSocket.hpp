#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kivo::test {

/// A connection on the loopback interface. A test that hangs ends with the time that it may take.
class TestSocket {
public:
    explicit TestSocket(int descriptor)
        : descriptor_{descriptor} {}

    TestSocket(TestSocket&& other) noexcept
        : descriptor_{std::exchange(other.descriptor_, -1)} {}

    TestSocket(const TestSocket&) = delete;
    TestSocket& operator=(const TestSocket&) = delete;
    TestSocket& operator=(TestSocket&&) = delete;

    ~TestSocket() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }

    void send(const std::vector<std::uint8_t>& bytes) const {
        [[maybe_unused]] const auto sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    /// That many bytes, or those before the other side closes.
    std::vector<std::uint8_t> receive(std::size_t count) const {
        std::vector<std::uint8_t> bytes(count);
        const auto got = count == 0 ? 0 : recv(descriptor_, bytes.data(), count, MSG_WAITALL);
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes;
    }

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

inline sockaddr_in loopbackAddress(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// A port of the loopback interface on which a test waits for connections.
class TestListener {
public:
    TestListener()
        : socket_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)} {
        const auto address = loopbackAddress(0);
        [[maybe_unused]] const int bound =
            bind(socket_.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        [[maybe_unused]] const int listens = listen(socket_.descriptor(), 8);
    }

    int port() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(socket_.descriptor(), reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    TestSocket accept() const { return TestSocket{::accept(socket_.descriptor(), nullptr, nullptr)}; }

private:
    TestSocket socket_;
};

inline TestSocket connectedTo(int port) {
    TestSocket socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const auto address = loopbackAddress(port);
    const bool isConnected =
        connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    return isConnected ? std::move(socket) : TestSocket{-1};
}

inline bool canConnectTo(int port) {
    return connectedTo(port).descriptor() >= 0;
}

} // namespace kivo::test
