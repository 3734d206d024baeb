#include "passport/CardMessages.hpp"

#include <kivo/simulator/CardService.hpp>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <system_error>
#include <thread>
#include <utility>

extern char** environ; // NOLINT(readability-redundant-declaration)

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto daemonProgram = "/usr/sbin/pcscd";
constexpr auto driver = "/usr/lib/pcsc/drivers/serial/libifdvpcd.so";
constexpr auto patience = 10s;

/// Runs the daemon in a view of the file system in which /run/pcscd is a folder of ours, until standard input ends.
/// The daemon ends with this shell, and the shell with the process that holds the other end of its input.
constexpr auto script = R"(
mount -t tmpfs none /run && mkdir /run/pcscd && mount --bind "$1" /run/pcscd || exit 1
/usr/sbin/pcscd --foreground --critical -c "$1/readers" </dev/null &
daemon=$!
cat >/dev/null
kill "$daemon"
wait "$daemon"
)";

/// A port that is free together with the next one: the driver has two slots.
int freePort() {
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto first = chip::listeningOn(0);
        const auto port = chip::portOf(first);
        if (first && chip::listeningOn(port + 1)) {
            return port;
        }
    }
    return 0;
}

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
    Daemon(std::filesystem::path folder, int port)
        : folder_{std::move(folder)}
        , port_{port} {}

    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    ~Daemon() {
        if (input_ >= 0) {
            close(input_);
        }
        if (process_ > 0) {
            waitpid(process_, nullptr, 0);
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    /// Whether the daemon takes clients.
    bool start() {
        std::filesystem::create_directory(folder_ / "readers");
        std::ofstream{folder_ / "readers" / "virtual"} << "FRIENDLYNAME \"Kivo virtual reader\"\n"
                                                       << "DEVICENAME /dev/null:" << port_ << "\n"
                                                       << "LIBPATH " << driver << "\n"
                                                       << "CHANNELID " << port_ << "\n";
        return spawn() && waitForClients();
    }

    std::filesystem::path socket() const { return folder_ / "pcscd.comm"; }

    int port() const { return port_; }

private:
    bool spawn() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            return false;
        }
        const chip::Socket reading{ends[0]};
        input_ = ends[1];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::array<std::string, 8> words{"unshare",       geteuid() == 0 ? "-m" : "-rm", "sh", "-c", script, "sh",
                                         folder_.string()};
        std::array<char*, 8> arguments{};
        for (std::size_t each = 0; each + 1 < arguments.size(); ++each) {
            arguments[each] = words[each].data();
        }
        const bool isRunning = posix_spawnp(&process_, "unshare", &actions, nullptr, arguments.data(), environ) == 0;
        posix_spawn_file_actions_destroy(&actions);
        process_ = isRunning ? process_ : 0;
        return isRunning;
    }

    bool waitForClients() {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (std::chrono::steady_clock::now() < deadline) {
            if (takesClients(socket())) {
                return true;
            }
            if (waitpid(process_, nullptr, WNOHANG) == process_) {
                process_ = 0;
                return false;
            }
            std::this_thread::sleep_for(10ms);
        }
        return false;
    }

    const std::filesystem::path folder_;
    const int port_;
    int input_ = -1;
    pid_t process_ = 0;
};

std::expected<std::unique_ptr<CardService>, std::string> CardService::start() {
    if (!std::filesystem::exists(daemonProgram) || !std::filesystem::exists(driver)) {
        return std::unexpected{"The packages pcscd and vsmartcard-vpcd are not installed."};
    }
    const auto port = freePort();
    auto pattern = (std::filesystem::temp_directory_path() / "kivo-cards-XXXXXX").string();
    if (port == 0 || mkdtemp(pattern.data()) == nullptr) {
        return std::unexpected{"There is no free port or no temporary folder."};
    }
    auto daemon = std::make_unique<Daemon>(pattern, port);
    if (!daemon->start()) {
        return std::unexpected{"A card service of its own needs the permission to mount (unshare)."};
    }
    return std::unique_ptr<CardService>{new CardService{std::move(daemon)}};
}

CardService::CardService(std::unique_ptr<Daemon> daemon)
    : daemon_{std::move(daemon)} {}

CardService::~CardService() = default;

std::filesystem::path CardService::socket() const {
    return daemon_->socket();
}

int CardService::readerPort() const {
    return daemon_->port();
}

} // namespace kivo::simulator
