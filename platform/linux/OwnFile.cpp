#include "platform/base/OwnFile.hpp"

#include <dlfcn.h>

#include <string>
#include <string_view>
#include <system_error>

namespace kivo::platform {

namespace fs = std::filesystem;

fs::path executable() {
    std::error_code error;
    auto file = fs::read_symlink("/proc/self/exe", error).string();
    // So Linux marks one that was replaced while it runs; what lies beside it is where it was.
    constexpr std::string_view replaced = " (deleted)";
    if (file.ends_with(replaced) && !fs::exists(file, error)) {
        file.resize(file.size() - replaced.size());
    }
    return file;
}

fs::path ownFile() {
    Dl_info info{};
    std::error_code error;
    if (dladdr(reinterpret_cast<const void*>(&ownFile), &info) == 0 || !info.dli_fname) {
        return executable();
    }
    auto file = fs::canonical(info.dli_fname, error);
    return error ? executable() : file;
}

} // namespace kivo::platform
