#include "platform/linux/LinuxDevice.hpp"

#include "platform/linux/DeviceIdentifier.hpp"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/utsname.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <mutex>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr int cellularNames = 4;
constexpr int firstWired = 2;
constexpr int wiredNames = 3;

enum class InterfaceKind { wireless, cellular, wired, other };

std::string startOf(const fs::path& path) {
    // One short line, or nothing when the interface has been removed meanwhile.
    std::array<char, 4096> bytes{};
    std::ifstream file{path};
    file.read(bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

InterfaceKind kindOf(const fs::path& folder) {
    std::error_code error;
    if (fs::exists(folder / "wireless", error) || fs::exists(folder / "phy80211", error)) {
        return InterfaceKind::wireless;
    }
    const auto name = folder.filename().string();
    if (name.starts_with("wwan") || name.starts_with("ppp") || startOf(folder / "uevent").contains("DEVTYPE=wwan\n")) {
        return InterfaceKind::cellular;
    }
    const bool isPhysical = fs::exists(folder / "device", error);
    const bool isEthernet = startOf(folder / "type") == "1\n";
    return isPhysical && isEthernet ? InterfaceKind::wired : InterfaceKind::other;
}

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
            // Also for an entry without an address, so that the numbers follow the system's order.
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

InterfaceNames::InterfaceNames(fs::path classFolder)
    : classFolder_{std::move(classFolder)} {}

std::string InterfaceNames::phoneName(const std::string& interfaceName) {
    const auto known = given_.find(interfaceName);
    return known != given_.end() ? known->second : given_.emplace(interfaceName, newName(interfaceName)).first->second;
}

std::string InterfaceNames::newName(const std::string& interfaceName) {
    switch (kindOf(classFolder_ / interfaceName)) {
    case InterfaceKind::wireless:
        return "en0";
    case InterfaceKind::cellular:
        return cellular_ < cellularNames ? "pdp_ip" + std::to_string(cellular_++) : interfaceName;
    case InterfaceKind::wired:
        return wired_ < wiredNames ? "en" + std::to_string(firstWired + wired_++) : interfaceName;
    case InterfaceKind::other:
        return interfaceName;
    }
    return interfaceName;
}

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
