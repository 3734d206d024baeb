#include "WrittenFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace simulation {

namespace fs = std::filesystem;

WrittenFile::WrittenFile(const fs::path& file, Readers readers)
    : file_{fs::absolute(file)}
    , beside_{[&] {
        std::error_code ignored;
        errno = EISDIR;
        if (fs::is_directory(file_, ignored)) {
            fail();
        }
        auto pattern = file_.string() + ".XXXXXX";
        // Readable for the owner alone.
        descriptor_ = mkostemp(pattern.data(), O_CLOEXEC);
        if (descriptor_ < 0) {
            fail();
        }
        return fs::path{pattern};
    }} {
    constexpr mode_t forAll = 0644;
    if (readers == Readers::all && fchmod(descriptor_, forAll) != 0) {
        fail();
    }
}

WrittenFile::~WrittenFile() {
    close(descriptor_);
}

void WrittenFile::finish(std::string_view content) {
    while (!content.empty()) {
        const auto written = write(descriptor_, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            fail();
        }
        content.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    if (fsync(descriptor_) != 0 || rename(beside_.path().c_str(), file_.c_str()) != 0) {
        fail();
    }
}

void WrittenFile::fail() const {
    throw std::runtime_error{file_.string() + " cannot be written (" + std::generic_category().message(errno) + ")"};
}

} // namespace simulation
