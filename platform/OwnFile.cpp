#include "OwnFile.hpp"

#include <dlfcn.h>

#include <system_error>

namespace kivo::platform {

namespace fs = std::filesystem;

fs::path executable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
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
