#include "PlatformCheck.hpp"

#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/RunLoop.hpp>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace kivo::check {
namespace {

bool ip(const std::string& arguments) {
    // The program lies in a folder that a user's path often lacks.
    return std::system(("PATH=$PATH:/usr/sbin:/sbin ip " + arguments + " >/dev/null 2>&1").c_str()) == 0;
}

/// A network namespace of this thread's own, with nothing but a loopback interface.
class NetworkNamespace final : public Network {
public:
    /// Null where this user may not make one, or the program ip is not installed.
    static std::unique_ptr<Network> make() {
        const int home = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        if (home < 0) {
            return nullptr;
        }
        if (unshare(CLONE_NEWNET) != 0) {
            close(home);
            return nullptr;
        }
        std::unique_ptr<Network> made{new NetworkNamespace{home}};
        return ip("link set lo up") ? std::move(made) : nullptr;
    }

    NetworkNamespace(const NetworkNamespace&) = delete;
    NetworkNamespace& operator=(const NetworkNamespace&) = delete;

    ~NetworkNamespace() override {
        setns(home_, CLONE_NEWNET);
        close(home_);
    }

    bool setReachable(bool reachable) override {
        return ip(std::string{"route "} + (reachable ? "add" : "del") + " default dev lo");
    }

private:
    explicit NetworkNamespace(int home)
        : home_{home} {}

    const int home_;
};

} // namespace

ServicesUnderTest builtPlatform() {
    return {
        .make =
            [](const Setting& setting) {
                return platform::linuxServices({.mainBundle = setting.mainBundle,
                                                .dataFolder = setting.dataFolder,
                                                .trustedCertificates = setting.trustedCertificates});
            },
        .runMainQueue = [](auto time) { platform::RunLoop::main()->runUntil([] { return false; }, time); },
        .takeNetwork = NetworkNamespace::make,
    };
}

} // namespace kivo::check
