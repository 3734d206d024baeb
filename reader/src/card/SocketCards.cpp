#include "card/BoundedSources.hpp"
#include "card/Capabilities.hpp"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace kivo::reader {
namespace {

using std::chrono::steady_clock;

// Between two attempts to connect: a listener that comes gives no sign.
constexpr std::chrono::milliseconds pause{100};
constexpr std::size_t lengthSize = 2;
// Messages of one byte are for the reader, not for the card.
constexpr std::uint8_t resetCard = 2;
constexpr std::uint8_t tellAnswerToReset = 4;
constexpr std::size_t longestMessage = 0xFFFF;

class Socket {
public:
    explicit Socket(int descriptor)
        : descriptor_{descriptor} {}

    Socket(Socket&& other) noexcept
        : descriptor_{std::exchange(other.descriptor_, -1)} {}

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    Socket& operator=(Socket&&) = delete;

    ~Socket() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }

    int descriptor() const { return descriptor_; }

    bool isReady(short events, steady_clock::time_point until) const {
        while (true) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - steady_clock::now());
            pollfd watched{.fd = descriptor_, .events = events, .revents = 0};
            const int found = poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
            if (found > 0) {
                return true;
            }
            if (found == 0 || errno != EINTR) {
                return false;
            }
        }
    }

    bool send(ByteView bytes, steady_clock::time_point until) const {
        while (!bytes.empty()) {
            const auto sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent > 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(sent));
            } else if (sent < 0 && errno == EINTR) {
                continue;
            } else if (sent == 0 || errno != EAGAIN || !isReady(POLLOUT, until)) {
                return false;
            }
        }
        return true;
    }

    bool receive(std::span<std::uint8_t> bytes, steady_clock::time_point until) const {
        while (!bytes.empty()) {
            const auto received = recv(descriptor_, bytes.data(), bytes.size(), 0);
            if (received > 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(received));
            } else if (received < 0 && errno == EINTR) {
                continue;
            } else if (received == 0 || errno != EAGAIN || !isReady(POLLIN, until)) {
                return false;
            }
        }
        return true;
    }

private:
    int descriptor_;
};

class SocketCard final : public Card {
public:
    SocketCard(Socket socket, std::chrono::milliseconds longest)
        : socket_{std::move(socket)}
        , longest_{longest} {
        // The reset has no answer.
        isGone_ = !sendMessage(Bytes{resetCard}, steady_clock::now() + longest_);
        historicalBytes_ = historicalBytesOf(SocketCard::transmit(Bytes{tellAnswerToReset}).value_or(Bytes{}));
    }

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        const auto until = steady_clock::now() + longest_;
        if (isGone_ || command.size() > longestMessage) {
            return std::unexpected{isGone_ ? CardError::gone : CardError::broken};
        }
        std::array<std::uint8_t, lengthSize> length{};
        Bytes answer;
        isGone_ = !sendMessage(command, until) || !socket_.receive(length, until);
        if (!isGone_) {
            answer.resize(static_cast<std::size_t>(length[0] << 8 | length[1]));
            isGone_ = !socket_.receive(answer, until);
        }
        if (isGone_) {
            return std::unexpected{CardError::gone};
        }
        return answer;
    }

    Bytes historicalBytes() const override { return historicalBytes_; }

private:
    bool sendMessage(ByteView bytes, steady_clock::time_point until) const {
        Bytes message{static_cast<std::uint8_t>(bytes.size() >> 8), static_cast<std::uint8_t>(bytes.size())};
        message.insert(message.end(), bytes.begin(), bytes.end());
        return socket_.send(message, until);
    }

    Socket socket_;
    std::chrono::milliseconds longest_;
    Bytes historicalBytes_{};
    bool isGone_ = false;
};

class SocketCards final : public CardSource {
public:
    SocketCards(std::string host, std::uint16_t port, std::chrono::milliseconds longest)
        : host_{std::move(host)}
        , port_{port}
        , longest_{longest} {}

    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds patience,
                                                                std::stop_token stop) override {
        const auto until = steady_clock::now() + patience;
        std::array<int, 2> bell{};
        if (pipe2(bell.data(), O_CLOEXEC) != 0) {
            return std::unexpected{CardError::noService};
        }
        const Socket heard{bell[0]};
        const Socket rung{bell[1]};
        const std::stop_callback wake{stop, [&rung] {
                                          const char byte = 0;
                                          [[maybe_unused]] const auto written = write(rung.descriptor(), &byte, 1);
                                      }};
        while (true) {
            if (stop.stop_requested()) {
                return std::unexpected{CardError::stopped};
            }
            if (auto card = connectedUntil(std::min(until, steady_clock::now() + longest_))) {
                return card;
            }
            if (steady_clock::now() >= until) {
                return std::unexpected{CardError::noCard};
            }
            heard.isReady(POLLIN, std::min(until, steady_clock::now() + pause));
        }
    }

    std::vector<std::string> readers() const override { return {host_ + ':' + std::to_string(port_)}; }

private:
    std::unique_ptr<Card> connectedUntil(steady_clock::time_point until) const {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
        addrinfo* found = nullptr;
        const auto name = host_ == "localhost" ? std::string{"127.0.0.1"} : host_;
        if (getaddrinfo(name.c_str(), std::to_string(port_).c_str(), &hints, &found) != 0) {
            return nullptr;
        }
        const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> address{found, &freeaddrinfo};
        Socket socket{::socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
        if (socket.descriptor() < 0) {
            return nullptr;
        }
        int failure = 0;
        socklen_t size = sizeof failure;
        if (connect(socket.descriptor(), address->ai_addr, address->ai_addrlen) != 0 &&
            (errno != EINPROGRESS || !socket.isReady(POLLOUT, until) ||
             getsockopt(socket.descriptor(), SOL_SOCKET, SO_ERROR, &failure, &size) != 0 || failure != 0)) {
            return nullptr;
        }
        const int yes = 1;
        setsockopt(socket.descriptor(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        return std::make_unique<SocketCard>(std::move(socket), longest_);
    }

    std::string host_;
    std::uint16_t port_;
    std::chrono::milliseconds longest_;
};

} // namespace

std::shared_ptr<CardSource> cardsBehindSocket(std::string host, std::uint16_t port) {
    return cardsBehindSocket(std::move(host), port, longestCall);
}

std::shared_ptr<CardSource> cardsBehindSocket(std::string host, std::uint16_t port, std::chrono::milliseconds longest) {
    return std::make_shared<SocketCards>(std::move(host), port, longest);
}

} // namespace kivo::reader
