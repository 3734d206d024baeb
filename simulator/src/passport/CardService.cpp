#include "passport/CardRoom.hpp"

#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <fstream>
#include <system_error>
#include <thread>
#include <utility>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto daemonProgram = "/usr/sbin/pcscd";
constexpr auto driver = "/usr/lib/pcsc/drivers/serial/libifdvpcd.so";
constexpr auto patience = 10s;

bool takesClients(const std::filesystem::path& path) {
    const chip::Socket socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    return connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

class CardService::Daemon {
public:
    explicit Daemon(std::filesystem::path folder)
        : folder_{std::move(folder)}
        , room_{chip::CardRoom::open(folder_)} {}

    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    ~Daemon() {
        if (room_) {
            room_->close();
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::shared_ptr<chip::CardRoom>& room() const { return room_; }

    /// Whether the daemon takes clients, which a daemon of before no longer does.
    bool start(bool hasReader) const {
        const auto readers = folder_ / "readers";
        std::filesystem::remove_all(readers);
        std::filesystem::create_directory(readers);
        if (hasReader) {
            std::ofstream{readers / "virtual"} << "FRIENDLYNAME \"Kivo virtual reader\"\n"
                                               << "DEVICENAME /dev/null:" << VirtualReader::usualPort << "\n"
                                               << "LIBPATH " << driver << "\n"
                                               << "CHANNELID " << VirtualReader::usualPort << "\n";
        }
        return room_->startDaemon() && waitForClients();
    }

    std::filesystem::path socket() const { return folder_ / "pcscd.comm"; }

private:
    bool waitForClients() const {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (!takesClients(socket())) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(10ms);
        }
        return true;
    }

    const std::filesystem::path folder_;
    const std::shared_ptr<chip::CardRoom> room_;
};

std::expected<std::unique_ptr<CardService>, std::string> CardService::start() {
    if (!std::filesystem::exists(daemonProgram) || !std::filesystem::exists(driver)) {
        return std::unexpected{"The packages pcscd and vsmartcard-vpcd are not installed."};
    }
    auto pattern = (std::filesystem::temp_directory_path() / "kivo-cards-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        return std::unexpected{"There is no temporary folder."};
    }
    auto daemon = std::make_unique<Daemon>(pattern);
    if (!daemon->room()) {
        return std::unexpected{
            "A card service of its own needs the permission to mount, and to make a network (unshare)."};
    }
    if (!daemon->start(true)) {
        return std::unexpected{"The daemon pcscd does not start."};
    }
    return std::unique_ptr<CardService>{new CardService{std::move(daemon)}};
}

CardService::CardService(std::unique_ptr<Daemon> daemon)
    : daemon_{std::move(daemon)} {}

CardService::~CardService() = default;

bool CardService::restart(bool hasReader) {
    return daemon_->start(hasReader);
}

std::filesystem::path CardService::socket() const {
    return daemon_->socket();
}

std::shared_ptr<chip::CardRoom> CardService::room() const {
    return daemon_->room();
}

} // namespace kivo::simulator
