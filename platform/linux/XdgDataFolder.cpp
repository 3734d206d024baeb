#include "platform/linux/XdgDataFolder.hpp"

#include "platform/base/OwnFile.hpp"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

fs::path absoluteFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    const fs::path path{value != nullptr ? value : ""};
    return path.is_absolute() ? path : fs::path{};
}

fs::path homeFolder() {
    if (auto home = absoluteFromEnvironment("HOME"); !home.empty()) {
        return home;
    }
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        const fs::path home{found->pw_dir != nullptr ? found->pw_dir : ""};
        return home.is_absolute() ? home : fs::path{};
    }
    return {};
}

std::string applicationName(const Bundle& mainBundle) {
    auto name = mainBundle.bundleIdentifier().value_or("");
    if (name.empty()) {
        name = "executable." + executable().filename().string();
    }
    // An identifier is a name, never a path.
    std::ranges::replace(name, '/', '_');
    return name == "." || name == ".." ? "_" : name;
}

} // namespace

DataFolder defaultDataFolder(const Bundle& mainBundle) {
    auto data = absoluteFromEnvironment("XDG_DATA_HOME");
    if (data.empty()) {
        const auto home = homeFolder();
        // A folder that all users share, such as /tmp, is no place for secrets.
        if (home.empty()) {
            return DataFolder{{}};
        }
        data = home / ".local" / "share";
    }
    return {std::move(data), fs::path{"kivo"} / applicationName(mainBundle)};
}

} // namespace kivo::platform
