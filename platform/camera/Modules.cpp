#include "platform/camera/Modules.hpp"

#include "platform/base/CodeLocation.hpp"

#include <dlfcn.h>
#include <link.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

fs::path placeOf(const char* file) {
    // A program of the build tree contains the library's objects, but the modules lie beside the library in lib/.
    const auto folder = libraryFile().parent_path();
    const std::array places{folder / file, folder.parent_path() / "lib" / file};
    std::error_code error;
    return fs::exists(places.back(), error) && !fs::exists(places.front(), error) ? places.back() : places.front();
}

/// Whether the file is long enough for what its header names. The dynamic loader opens and maps any file: a FIFO would
/// block the loader, and a library that is cut off would end the process.
bool isWholeLibrary(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        return false;
    }
    ElfW(Ehdr) header{};
    std::ifstream{file, std::ios::binary}.read(reinterpret_cast<char*>(&header), sizeof header);
    const auto size = fs::file_size(file, error);
    // The section table is the last part of a library.
    const auto table = std::uintmax_t{header.e_shnum} * header.e_shentsize;
    return std::string_view{reinterpret_cast<const char*>(header.e_ident), SELFMAG} == ELFMAG && table <= size &&
           header.e_shoff <= size - table;
}

template <class Module>
std::expected<const Module*, std::string> load() {
    const auto problem = [](const std::string& what) {
        return std::unexpected{std::string{Module::file} + " cannot be used: " + what + ". It is installed beside " +
                               "libkivo and needs " + Module::needs + "."};
    };
    const auto file = placeOf(Module::file);
    std::error_code error;
    if (fs::exists(file, error) && !isWholeLibrary(file)) {
        return problem(file.string() + " is no library, or is cut off");
    }
    // Never closed: the module's libraries keep threads and exit handlers.
    void* const loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        return problem(::dlerror());
    }
    const auto* const module = static_cast<const Module*>(::dlsym(loaded, Module::entry));
    if (module == nullptr) {
        return problem(file.string() + " is another library");
    }
    if (module->version != std::string_view{KIVO_SDK_VERSION}) {
        return problem("it is of another version than libkivo");
    }
    return module;
}

} // namespace

std::expected<const CodesModule*, std::string> codesModule() {
    static const auto module = load<CodesModule>();
    return module;
}

std::expected<const CameraModule*, std::string> cameraModule() {
    static const auto module = load<CameraModule>();
    return module;
}

} // namespace kivo::platform
