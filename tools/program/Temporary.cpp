#include "program/Temporary.hpp"

#include <cerrno>
#include <set>
#include <stdexcept>
#include <system_error>

namespace program {
namespace {

namespace fs = std::filesystem;

struct Registry {
    std::mutex mutex;
    std::multiset<fs::path> paths;
};

Registry& registry() {
    // Never destroyed: the thread that waits for signals may need the registry until the end.
    static auto& only = *new Registry;
    return only;
}

void removeWhole(const fs::path& path) {
    // Other threads may still add files to a folder that is being removed.
    constexpr int mostAttempts = 100;
    std::error_code error;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        fs::remove_all(path, error);
        if (!error) {
            return;
        }
    }
}

fs::path placeForTemporaries() {
    std::error_code error;
    auto place = fs::temp_directory_path(error);
    if (error) {
        const char* const named = std::getenv("TMPDIR");
        throw std::runtime_error{std::string{"temporary files go to \""} + (named != nullptr ? named : "/tmp") +
                                 "\", which is not a folder; set TMPDIR"};
    }
    return place;
}

fs::path makeFolder(const std::string& name) {
    const auto place = placeForTemporaries();
    auto pattern = (place / (name + "-XXXXXX")).string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error{"no folder can be made in " + place.string() + " (" +
                                 std::generic_category().message(errno) + ")"};
    }
    return pattern;
}

} // namespace

Temporary::Temporary(const std::function<fs::path()>& make) {
    const std::scoped_lock lock{registry().mutex};
    path_ = make();
    registry().paths.insert(path_);
}

Temporary::~Temporary() {
    const std::scoped_lock lock{registry().mutex};
    removeWhole(path_);
    registry().paths.extract(path_);
}

TemporaryFolder::TemporaryFolder(const std::string& name)
    : folder_{[&] { return makeFolder(name); }} {}

TemporaryFolder::Environment::Environment(const fs::path& folder) {
    if (const char* const before = std::getenv("TMPDIR"); before != nullptr) {
        before_ = before;
    }
    setenv("TMPDIR", folder.c_str(), 1);
}

TemporaryFolder::Environment::~Environment() {
    if (before_) {
        setenv("TMPDIR", before_->c_str(), 1);
    } else {
        unsetenv("TMPDIR");
    }
}

std::unique_lock<std::mutex> removeTemporaries() {
    std::unique_lock lock{registry().mutex};
    for (const auto& path : registry().paths) {
        removeWhole(path);
    }
    return lock;
}

} // namespace program
