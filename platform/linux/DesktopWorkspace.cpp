#include "platform/linux/DesktopWorkspace.hpp"

#include "platform/posix/BackgroundThread.hpp"

#include <kivo/platform/Url.hpp>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <tuple>

namespace kivo::platform {
namespace {

// Anything else could start a program or be taken for an option.
bool isWebAddress(std::string_view text) {
    const auto url = parseUrl(text);
    return url && (url->scheme == "https" || url->scheme == "http");
}

/// How the browser is started: as a session of its own, without the host's files, terminal and signal settings.
class DetachedStart {
public:
    DetachedStart() {
        posix_spawn_file_actions_init(&files_);
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            posix_spawn_file_actions_addopen(&files_, descriptor, "/dev/null", O_RDWR, 0);
        }
        posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);
        sigset_t signals;
        posix_spawnattr_init(&attributes_);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    DetachedStart(const DetachedStart&) = delete;
    DetachedStart& operator=(const DetachedStart&) = delete;

    ~DetachedStart() {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }

    std::optional<pid_t> run(std::string program, std::string argument) const {
        char* const arguments[] = {program.data(), argument.data(), nullptr};
        pid_t child = 0;
        const int error = posix_spawnp(&child, program.c_str(), &files_, &attributes_, arguments, environ);
        return error == 0 ? std::optional{child} : std::nullopt;
    }

private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

void waitForEnd(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

class DesktopWorkspace final : public Workspace {
public:
    void open(const std::string& url) override {
        if (!isWebAddress(url)) {
            return;
        }
        if (const auto child = DetachedStart{}.run("xdg-open", url)) {
            // Without a thread to wait on, the ended child stays listed until the host ends; the page opens all the
            // same.
            std::ignore = startBackgroundThread("kivo-browser", [child = *child] { waitForEnd(child); });
        }
    }

    void vibrate() override {}
};

} // namespace

std::shared_ptr<Workspace> makeDesktopWorkspace() {
    return std::make_shared<DesktopWorkspace>();
}

} // namespace kivo::platform
