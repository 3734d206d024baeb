#pragma once

#include <httplib.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace kivo::simulator {

/// Binds the server to a port of the loopback interface, 0 for any free port, and returns the port. Throws
/// `std::runtime_error` when the port cannot be taken; `whose` begins its text, such as "the control interface: ".
inline int bindToLoopback(httplib::Server& server, int port, const std::string& whose = {}) {
    // Without the library's SO_REUSEPORT, which would let two servers share a port.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    constexpr auto loopback = "127.0.0.1";
    errno = 0;
    const int bound = port == 0 ? server.bind_to_any_port(loopback) : server.bind_to_port(loopback, port) ? port : -1;
    if (bound <= 0) {
        const auto reason = errno == 0 ? "" : " (" + std::generic_category().message(errno) + ")";
        throw std::runtime_error{whose +
                                 (port == 0
                                      ? "no port is free on the loopback interface"
                                      : "port " + std::to_string(port) + " of the loopback interface cannot be taken") +
                                 reason};
    }
    return bound;
}

/// The thread on which a bound server answers. The server runs when the function returns.
inline std::thread startAnswering(httplib::Server& server) {
    std::thread thread{[&server] { server.listen_after_bind(); }};
    while (!server.is_running()) {
        std::this_thread::yield();
    }
    return thread;
}

} // namespace kivo::simulator
