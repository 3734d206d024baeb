#include "linux/DataFolder.hpp"

#include "OwnFile.hpp"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>

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
        return found->pw_dir;
    }
    return fs::temp_directory_path();
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

fs::path defaultDataFolder(const Bundle& mainBundle) {
    auto data = absoluteFromEnvironment("XDG_DATA_HOME");
    if (data.empty()) {
        data = homeFolder() / ".local" / "share";
    }
    return data / "kivo" / applicationName(mainBundle);
}

} // namespace kivo::platform
