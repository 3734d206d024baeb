#include "platform/linux/LinuxDevice.hpp"

#include "platform/linux/DeviceIdentifier.hpp"
#include "platform/linux/InterfaceNames.hpp"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/utsname.h>

#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>

namespace kivo::platform {
namespace {

struct AddressesDeleter {
    void operator()(ifaddrs* addresses) const { freeifaddrs(addresses); }
};

std::string contentsOf(const char* path) {
    std::ifstream file{path};
    return {std::istreambuf_iterator{file}, {}};
}

std::string numericHost(const sockaddr& address) {
    const socklen_t size = address.sa_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    char host[NI_MAXHOST];
    return getnameinfo(&address, size, host, sizeof host, nullptr, 0, NI_NUMERICHOST) == 0 ? host : "";
}

class LinuxDevice final : public Device {
public:
    LinuxDevice(DataFolder dataFolder, std::shared_ptr<Diagnostics> diagnostics)
        : dataFolder_{std::move(dataFolder)}
        , diagnostics_{std::move(diagnostics)} {}

    std::string systemVersion() override {
        for (const auto* path : {"/etc/os-release", "/usr/lib/os-release"}) {
            if (auto version = versionOfRelease(contentsOf(path)); !version.empty()) {
                return version;
            }
        }
        utsname system{};
        return uname(&system) == 0 ? system.release : "";
    }

    std::optional<std::string> identifierForVendor() override {
        bool isNewProblem = false;
        DeviceIdentifier result;
        {
            const std::scoped_lock lock{mutex_};
            if (identifier_) {
                return identifier_;
            }
            result = readOrCreateDeviceIdentifier(dataFolder_);
            identifier_ = result.identifier;
            isNewProblem = !result.problem.empty() && std::exchange(problem_, result.problem) != result.problem;
        }
        if (isNewProblem && diagnostics_) {
            diagnostics_->report("device", result.problem);
        }
        return result.identifier;
    }

    std::vector<InterfaceAddress> interfaceAddresses() override {
        ifaddrs* raw = nullptr;
        if (getifaddrs(&raw) != 0) {
            return {};
        }
        const std::unique_ptr<ifaddrs, AddressesDeleter> all{raw};
        InterfaceNames names;
        std::vector<InterfaceAddress> addresses;
        for (const auto* entry = all.get(); entry; entry = entry->ifa_next) {
            // Asked for every entry, also those without an address, so that the numbering keeps to the system's order.
            auto name = names.phoneName(entry->ifa_name);
            const int family = entry->ifa_addr ? entry->ifa_addr->sa_family : AF_UNSPEC;
            if (family == AF_INET || family == AF_INET6) {
                addresses.push_back({std::move(name), family == AF_INET ? AddressFamily::ipv4 : AddressFamily::ipv6,
                                     numericHost(*entry->ifa_addr)});
            }
        }
        return addresses;
    }

    std::string machine() override {
        utsname system{};
        return uname(&system) == 0 ? system.machine : "";
    }

private:
    const DataFolder dataFolder_;
    const std::shared_ptr<Diagnostics> diagnostics_;
    std::mutex mutex_;
    std::optional<std::string> identifier_;
    std::string problem_;
};

} // namespace

std::shared_ptr<Device> makeLinuxDevice(DataFolder dataFolder, std::shared_ptr<Diagnostics> diagnostics) {
    return std::make_shared<LinuxDevice>(std::move(dataFolder), std::move(diagnostics));
}

std::string versionOfRelease(std::string_view osRelease) {
    constexpr std::string_view key = "VERSION_ID=";
    while (!osRelease.empty()) {
        const auto end = std::min(osRelease.find('\n'), osRelease.size());
        auto line = osRelease.substr(0, end);
        osRelease.remove_prefix(std::min(end + 1, osRelease.size()));
        if (!line.starts_with(key)) {
            continue;
        }
        line.remove_prefix(key.size());
        if (line.size() >= 2 && (line.front() == '"' || line.front() == '\'') && line.back() == line.front()) {
            line = line.substr(1, line.size() - 2);
        }
        return std::string{line};
    }
    return {};
}

} // namespace kivo::platform
