#pragma once

#include <kivo/simulator/Passport.hpp>

#include <functional>
#include <stop_token>

namespace kivo::simulator::chip {

/// A socket, closed with the object.
class Socket {
public:
    explicit Socket(int descriptor = -1)
        : descriptor_{descriptor} {}

    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket();

    int descriptor() const { return descriptor_; }

    explicit operator bool() const { return descriptor_ >= 0; }

private:
    int descriptor_;
};

/// A socket that is not connected.
Socket newSocket();

/// The socket, connected to the port of its loopback interface; without a descriptor where nobody listens, or a stop is
/// requested.
Socket connectedTo(Socket socket, int port, const std::stop_token& stop);

/// A socket that listens on the port of the loopback interface; 0 for a free one. Without a descriptor where none is
/// free.
Socket listeningOn(int port);

/// The port of a socket on this machine.
int portOf(const Socket& socket);

/// Waits until the socket can be read; false when a stop is requested or `goesOn` is no longer true.
bool waitForBytes(const Socket& socket, const std::stop_token& stop, const std::function<bool()>& goesOn);

/// Answers the messages of a card reader until the other side closes, the passport is off the reader, or a stop is
/// requested. `askedForReset` is called whenever the reader has been told the answer to reset.
void serveReader(const Socket& socket, Passport& passport, const std::stop_token& stop,
                 const std::function<void()>& askedForReset);

/// Leaves the reader's first message without an answer. Whether the reader has asked for the answer to reset, which the
/// driver does when it looks for a card: it then tells the card service that there is none.
bool isAskedInVain(Socket socket, const Passport& passport, const std::stop_token& stop);

} // namespace kivo::simulator::chip
