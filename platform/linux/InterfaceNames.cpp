#include "platform/linux/InterfaceNames.hpp"

#include <array>
#include <cstddef>
#include <fstream>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr int cellularNames = 4;
constexpr int firstWired = 2;
constexpr int wiredNames = 3;

enum class Kind { wireless, cellular, wired, other };

std::string contentsOf(const fs::path& path) {
    // One short line, or none where the interface has gone meanwhile.
    std::array<char, 4096> bytes{};
    std::ifstream file{path};
    file.read(bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

Kind kindOf(const fs::path& folder) {
    std::error_code error;
    if (fs::exists(folder / "wireless", error) || fs::exists(folder / "phy80211", error)) {
        return Kind::wireless;
    }
    const auto name = folder.filename().string();
    if (name.starts_with("wwan") || name.starts_with("ppp") ||
        contentsOf(folder / "uevent").contains("DEVTYPE=wwan\n")) {
        return Kind::cellular;
    }
    const bool isPhysical = fs::exists(folder / "device", error);
    const bool isEthernet = contentsOf(folder / "type") == "1\n";
    return isPhysical && isEthernet ? Kind::wired : Kind::other;
}

} // namespace

InterfaceNames::InterfaceNames(fs::path classFolder)
    : classFolder_{std::move(classFolder)} {}

std::string InterfaceNames::phoneName(const std::string& interfaceName) {
    const auto known = given_.find(interfaceName);
    return known != given_.end() ? known->second : given_.emplace(interfaceName, newName(interfaceName)).first->second;
}

std::string InterfaceNames::newName(const std::string& interfaceName) {
    switch (kindOf(classFolder_ / interfaceName)) {
    case Kind::wireless:
        return "en0";
    case Kind::cellular:
        return cellular_ < cellularNames ? "pdp_ip" + std::to_string(cellular_++) : interfaceName;
    case Kind::wired:
        return wired_ < wiredNames ? "en" + std::to_string(firstWired + wired_++) : interfaceName;
    case Kind::other:
        return interfaceName;
    }
    return interfaceName;
}

} // namespace kivo::platform
