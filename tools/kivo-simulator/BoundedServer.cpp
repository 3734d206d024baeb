#include "BoundedServer.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <string_view>

namespace simulation {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto longestPause = 5s;
constexpr auto longestRequest = 15s;
constexpr auto longestWrite = 10s;
/// How soon a wait notices that the server stops.
constexpr auto lookAround = 100ms;

/// A connection's bytes, counted.
class BoundedStream final : public httplib::Stream {
public:
    /// `listening` is the server's own socket, or none once the server stops.
    BoundedStream(socket_t socket, const std::atomic<socket_t>& listening)
        : socket_{socket}
        , listening_{listening} {}

    /// Lets that many bytes more come, instead of those that were left.
    void allow(std::size_t bytes) { left_ = bytes; }

    bool is_readable() const override { return !unread_.empty() || waitFor(POLLIN, longestPause, end_); }

    /// Whether the client is there and takes bytes.
    bool is_writable() const override {
        pollfd wanted{.fd = socket_, .events = POLLOUT | POLLRDHUP, .revents = 0};
        return poll(&wanted, 1, 0) >= 0 && (wanted.revents & (POLLRDHUP | POLLHUP | POLLERR)) == 0 &&
               waitFor(POLLOUT, longestWrite, Clock::time_point::max());
    }

    ssize_t read(char* to, std::size_t size) override {
        if (unread_.empty()) {
            const auto room = std::min(left_, buffer_.size());
            if (room == 0 || !waitFor(POLLIN, longestPause, end_)) {
                return -1;
            }
            const auto received = recv(socket_, buffer_.data(), room, 0);
            if (received <= 0) {
                return received;
            }
            unread_ = {buffer_.data(), static_cast<std::size_t>(received)};
            left_ -= unread_.size();
        }
        const auto taken = std::min(size, unread_.size());
        std::memcpy(to, unread_.data(), taken);
        unread_.remove_prefix(taken);
        return static_cast<ssize_t>(taken);
    }

    ssize_t write(const char* from, std::size_t size) override {
        return waitFor(POLLOUT, longestWrite, Clock::time_point::max()) ? send(socket_, from, size, MSG_NOSIGNAL) : -1;
    }

    // Every client is on this machine, and nothing asks for its port.
    void get_remote_ip_and_port(std::string& ip, int& port) const override { noAddress(ip, port); }

    void get_local_ip_and_port(std::string& ip, int& port) const override { noAddress(ip, port); }

    socket_t socket() const override { return socket_; }

private:
    static void noAddress(std::string& ip, int& port) {
        ip.clear();
        port = 0;
    }

    bool waitFor(short event, std::chrono::seconds limit, Clock::time_point end) const {
        end = std::min(end, Clock::now() + limit);
        // Asks the socket before the server: a server that stops still writes the last bytes of an answer.
        do {
            pollfd wanted{.fd = socket_, .events = event, .revents = 0};
            if (poll(&wanted, 1, static_cast<int>(lookAround.count())) > 0) {
                return true;
            }
        } while (listening_ != INVALID_SOCKET && Clock::now() < end);
        return false;
    }

    const socket_t socket_;
    const std::atomic<socket_t>& listening_;
    const Clock::time_point end_ = Clock::now() + longestRequest;
    std::size_t left_ = BoundedServer::mostOfHead;
    std::array<char, 4096> buffer_{};
    std::string_view unread_;
};

} // namespace

bool BoundedServer::process_and_close_socket(socket_t socket) {
    BoundedStream stream{socket, svr_sock_};
    bool isClosed = false;
    const auto prepareForBody = [&](httplib::Request& request) {
        stream.allow(mostOfBody);
        // The library reads a body in parts, and a body of this method, into memory as it unpacks the body.
        if (request.is_multipart_form_data() || request.method == "PRI") {
            request.headers.erase("Content-Type");
            request.headers.erase("Content-Encoding");
        }
    };
    const bool isServed = process_request(stream, true, isClosed, prepareForBody);
    shutdown(socket, SHUT_RDWR);
    close(socket);
    return isServed;
}

} // namespace simulation
