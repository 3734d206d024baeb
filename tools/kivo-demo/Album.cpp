#include "Album.hpp"

#include <kivo/platform/Services.hpp>

#include <cxxabi.h>
#include <dlfcn.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <typeinfo>
#include <utility>

namespace demo {
namespace {

/// The screen's class without its namespaces; empty for a screen of the base class.
std::string className(const kivo::platform::ViewController& screen) {
    if (typeid(screen) == typeid(kivo::platform::ViewController)) {
        return {};
    }
    const std::unique_ptr<char, decltype(&std::free)> whole{
        abi::__cxa_demangle(typeid(screen).name(), nullptr, nullptr, nullptr), &std::free};
    const std::string name = whole ? whole.get() : "screen";
    const auto colon = name.rfind(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
}

std::string asFileName(std::string_view words) {
    std::string name{words};
    for (auto& c : name) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '-';
    }
    return name;
}

} // namespace

std::shared_ptr<Album> Album::open(const std::filesystem::path& folder) {
    // Never closed: the objects of the library are used until the process ends.
    auto* const library = dlopen(KIVO_DEVICE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    auto* const symbol = library != nullptr ? dlsym(library, kivo::device::openPicturesName) : nullptr;
    if (symbol == nullptr) {
        throw std::runtime_error{std::string{"pictures need the device component, which is built where Qt 6 is "
                                             "installed (qt6-base-dev): "} +
                                 dlerror()};
    }
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw std::runtime_error{"cannot make the folder " + folder.string() + ": " + error.message()};
    }
    const auto openPictures = reinterpret_cast<kivo::device::OpenPictures>(symbol);
    return std::make_shared<Album>(std::unique_ptr<kivo::device::Pictures>{openPictures()}, folder);
}

Album::Album(std::unique_ptr<kivo::device::Pictures> pictures, std::filesystem::path folder)
    : pictures_{std::move(pictures)}
    , folder_{std::move(folder)}
    , contrasts_{folder_} {}

void Album::follow(const std::shared_ptr<kivo::platform::Window>& window) {
    window_ = window;
    window->setObserver(weak_from_this());
}

void Album::take(std::string_view occasion) {
    const auto window = window_.lock();
    const auto screen = window ? window->visibleViewController() : nullptr;
    const auto name = screen ? className(*screen) : std::string{};
    if (name.empty() || !std::exchange(isChanged_, false)) {
        return;
    }
    char number[16];
    std::snprintf(number, sizeof number, "%02d", ++number_);
    const auto file = folder_ / asFileName(number + ("-" + name) + "-" + std::string{occasion});
    if (const auto saved = pictures_->save(*window, file.string() + ".png")) {
        ++saved_;
        const auto hardlyRead = contrasts_.add(file.filename().string(), pictures_->contrasts(*window));
        problem_ = problem_.empty() ? hardlyRead : problem_;
    } else if (problem_.empty()) {
        problem_ = saved.error();
    }
}

void Album::viewDidChange(kivo::platform::View& /*view*/) {
    isChanged_ = true;
}

void Album::screenDidChange() {
    isChanged_ = true;
    const auto queue = kivo::platform::services().mainQueue;
    // The screen appears in the queue's next block; the picture is taken after it.
    queue->async([queue, weak = weak_from_this()] {
        queue->async([weak] {
            if (const auto self = weak.lock()) {
                self->take("appears");
            }
        });
    });
}

} // namespace demo
