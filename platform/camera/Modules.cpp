#include "platform/camera/Modules.hpp"

#include "platform/base/OwnFile.hpp"

#include <dlfcn.h>

#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

fs::path placeOf(const char* file) {
    // Programs of the build tree contain the library's objects; the modules lie beside the library all the same.
    const auto folder = ownFile().parent_path();
    const std::array places{folder / file, folder.parent_path() / "lib" / file};
    std::error_code error;
    return fs::exists(places.back(), error) && !fs::exists(places.front(), error) ? places.back() : places.front();
}

template <class Module>
std::expected<const Module*, std::string> load() {
    const auto problem = [](const std::string& what) {
        return std::unexpected{std::string{Module::file} + " cannot be used: " + what + ". It is installed beside " +
                               "libkivo and needs " + Module::needs + "."};
    };
    // Never closed: the libraries behind it keep threads and exit handlers.
    void* const loaded = ::dlopen(placeOf(Module::file).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        return problem(::dlerror());
    }
    const auto* const module = static_cast<const Module*>(::dlsym(loaded, "kivoModule"));
    if (module == nullptr || module->version != std::string_view{KIVO_SDK_VERSION}) {
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
