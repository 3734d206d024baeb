#pragma once

#include <kivo/simulator/Passport.hpp>

#include <chrono>
#include <memory>

namespace kivo::simulator {

class CardService;

/// A reader of the system's card service on which a simulated passport lies: speaks the protocol of the virtual reader
/// driver (Debian's vsmartcard-vpcd), so that the real daemon carries every byte.
///
/// The card is on the reader while the passport is: a passport that is taken away or laid down is so for the card
/// service, too. Before a card comes, the service has once asked in vain, so that it takes the card for another than
/// the one before; that takes the service half a second.
class VirtualReader {
public:
    /// The port on which the driver waits for a card, as Debian sets it up.
    static constexpr int usualPort = 35963;

    /// Connects to the driver on this machine, and tries again for as long as nobody listens.
    explicit VirtualReader(std::shared_ptr<Passport> passport, int port = usualPort);
    /// The same with the reader of a service of its own, in slot 0 or 1. The service may end before the reader.
    VirtualReader(std::shared_ptr<Passport> passport, const CardService& service, int slot = 0);
    VirtualReader(const VirtualReader&) = delete;
    VirtualReader& operator=(const VirtualReader&) = delete;
    /// Takes the card off the reader; the passport stays as it is.
    ~VirtualReader();

    /// Waits until the driver has asked for the card's answer to reset; false when `limit` passes first. Callable from
    /// any thread.
    bool waitForDriver(std::chrono::milliseconds limit) const;

private:
    class Connection;

    std::unique_ptr<Connection> connection_;
};

/// A stand-in for a card reader where the system's card service cannot run: the passport on a port of the loopback
/// interface, one client at a time. The client sends commands and gets answers, each with its length in two bytes, the
/// higher first. A message of one byte is for the reader: 0 power off, 1 power on, 2 reset, and 4, which alone has an
/// answer, the answer to reset. While the passport is off the reader, nobody listens on the port.
class CardSocket {
public:
    /// Listens on a free port. Throws `std::runtime_error` where there is none.
    explicit CardSocket(std::shared_ptr<Passport> passport);
    CardSocket(const CardSocket&) = delete;
    CardSocket& operator=(const CardSocket&) = delete;
    ~CardSocket();

    /// The port on 127.0.0.1.
    int port() const;

private:
    class Listener;

    std::unique_ptr<Listener> listener_;
};

} // namespace kivo::simulator
