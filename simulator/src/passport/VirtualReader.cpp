#include "passport/CardMessages.hpp"
#include "passport/CardRoom.hpp"

#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <sys/socket.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace kivo::simulator {

class VirtualReader::Connection {
public:
    Connection(std::shared_ptr<Passport> passport, int port, std::shared_ptr<chip::CardRoom> room)
        : passport_{std::move(passport)}
        , port_{port}
        , room_{std::move(room)}
        , thread_{[this](const std::stop_token& stop) { serve(stop); }} {}

    bool waitForDriver(std::chrono::milliseconds limit) {
        std::unique_lock lock{mutex_};
        return changed_.wait_for(lock, limit, [this] { return hasAsked_; });
    }

private:
    void serve(const std::stop_token& stop) {
        // A driver that begins to listen gives no sign.
        constexpr std::chrono::milliseconds pause{20};
        bool wasMissed = false;
        while (passport_->waitForReader(stop)) {
            auto socket = chip::connectedTo(room_ ? room_->newSocket() : chip::newSocket(), port_, stop);
            if (socket && !wasMissed) {
                wasMissed = chip::isAskedInVain(std::move(socket), *passport_, stop);
            } else if (socket) {
                passport_->reset();
                chip::serveReader(socket, *passport_, stop, [this] { setAsked(true); });
                setAsked(false);
                wasMissed = false;
            }
            std::unique_lock lock{mutex_};
            changed_.wait_for(lock, stop, pause, [] { return false; });
        }
    }

    void setAsked(bool hasAsked) {
        const std::scoped_lock lock{mutex_};
        hasAsked_ = hasAsked;
        changed_.notify_all();
    }

    const std::shared_ptr<Passport> passport_;
    const int port_;
    const std::shared_ptr<chip::CardRoom> room_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    bool hasAsked_ = false;
    std::jthread thread_;
};

VirtualReader::VirtualReader(std::shared_ptr<Passport> passport, int port)
    : connection_{std::make_unique<Connection>(std::move(passport), port, nullptr)} {}

VirtualReader::VirtualReader(std::shared_ptr<Passport> passport, const CardService& service, int slot)
    : connection_{std::make_unique<Connection>(std::move(passport), usualPort + slot, service.room())} {}

VirtualReader::~VirtualReader() = default;

bool VirtualReader::waitForDriver(std::chrono::milliseconds limit) const {
    return connection_->waitForDriver(limit);
}

class CardSocket::Listener {
public:
    explicit Listener(std::shared_ptr<Passport> passport)
        : passport_{std::move(passport)}
        , socket_{chip::listeningOn(0)}
        , port_{chip::portOf(socket_)} {
        if (!socket_) {
            throw std::runtime_error{"simulator: no port is free on the loopback interface"};
        }
        thread_ = std::jthread{[this](const std::stop_token& stop) { serve(stop); }};
    }

    int port() const { return port_; }

private:
    void serve(const std::stop_token& stop) {
        const auto lies = [this] { return passport_->isOnReader(); };
        while (!stop.stop_requested()) {
            if (chip::waitForBytes(socket_, stop, lies)) {
                const chip::Socket client{accept4(socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC)};
                passport_->reset();
                chip::serveReader(client, *passport_, stop, [] {});
            }
            if (!lies()) {
                // Nobody listens while no card lies on the reader.
                socket_ = chip::Socket{};
                passport_->waitForReader(stop);
                socket_ = chip::listeningOn(port_);
            }
        }
    }

    const std::shared_ptr<Passport> passport_;
    chip::Socket socket_;
    const int port_;
    std::jthread thread_;
};

CardSocket::CardSocket(std::shared_ptr<Passport> passport)
    : listener_{std::make_unique<Listener>(std::move(passport))} {}

CardSocket::~CardSocket() = default;

int CardSocket::port() const {
    return listener_->port();
}

} // namespace kivo::simulator
