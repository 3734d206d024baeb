#include "platform/posix/Files.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

std::unexpected<std::string> cannotBeRead() {
    return std::unexpected{"cannot be read (" + std::generic_category().message(errno) + ")"};
}

} // namespace

bool isShortOfDescriptors() {
    constexpr std::size_t aFew = 8;
    std::vector<FileDescriptor> probes;
    while (probes.size() < aFew) {
        FileDescriptor probe{::open("/dev/null", O_RDONLY | O_CLOEXEC)};
        if (!probe) {
            return errno == EMFILE || errno == ENFILE;
        }
        probes.push_back(std::move(probe));
    }
    return false;
}

std::expected<std::optional<std::string>, std::string> readFile(const std::filesystem::path& path) {
    // Without O_NONBLOCK, opening a FIFO waits for its writer.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0 && (errno == ENOENT || errno == ENOTDIR)) {
        return std::nullopt;
    }
    const std::unique_ptr<std::FILE, decltype([](std::FILE* each) { std::fclose(each); })> file{
        descriptor < 0 ? nullptr : ::fdopen(descriptor, "rb")};
    struct stat status{};
    if (!file || ::fstat(descriptor, &status) != 0) {
        return cannotBeRead();
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected{"is not a file"};
    }
    // Room for one byte more than the size shows whether the file has grown since.
    std::string bytes(std::min(static_cast<std::size_t>(status.st_size), largestFile) + 1, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get()) != 0) {
        return cannotBeRead();
    }
    if (bytes.size() > largestFile) {
        return std::unexpected{"is larger than 4 MiB"};
    }
    return bytes;
}

} // namespace kivo::platform
