#pragma once

#include "Events.hpp"
#include "Interface.hpp"

#include <memory>

namespace simulation {

/// Serves the page and the control interface over HTTP on loopback, to programs of this machine and to the page itself,
/// but to no page of another origin.
class Control {
public:
    /// Serves on a free port where `port` is 0. Throws `std::runtime_error` with a sentence when the port is taken. The
    /// interface and the events outlive the server.
    Control(Interface& interface, Events& events, int port);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    /// Stops, and ends the streams of events.
    ~Control();

    /// The address of the page, without a slash at its end.
    std::string address() const;

private:
    class Server;

    std::unique_ptr<Server> server_;
};

} // namespace simulation
