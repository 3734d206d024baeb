#include "platform/base/CodeLocation.hpp"

#include <dlfcn.h>

#include <string>
#include <string_view>
#include <system_error>

namespace kivo::platform {

namespace fs = std::filesystem;

fs::path executableFile() {
    std::error_code error;
    auto file = fs::read_symlink("/proc/self/exe", error).string();
    // Linux marks a program that was replaced while it runs in this way. The files beside the program stay in place.
    constexpr std::string_view replaced = " (deleted)";
    if (file.ends_with(replaced) && !fs::exists(file, error)) {
        file.resize(file.size() - replaced.size());
    }
    return file;
}

fs::path libraryFile() {
    Dl_info info{};
    std::error_code error;
    if (dladdr(reinterpret_cast<const void*>(&libraryFile), &info) == 0 || !info.dli_fname) {
        return executableFile();
    }
    auto file = fs::canonical(info.dli_fname, error);
    return error ? executableFile() : file;
}

} // namespace kivo::platform
