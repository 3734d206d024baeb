#include "linux/WholeFile.hpp"

#include "linux/FileDescriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace kivo::platform {
namespace {

int fillAndName(const FileDescriptor& draft, const char* draftPath, const char* path, std::string_view content) {
    const auto written = ::write(draft.get(), content.data(), content.size());
    if (written != static_cast<ssize_t>(content.size())) {
        return written < 0 ? errno : ENOSPC;
    }
    // A link, unlike a rename, leaves a file alone that is there already.
    return ::fsync(draft.get()) == 0 && ::link(draftPath, path) == 0 ? 0 : errno;
}

} // namespace

int createWholeFile(const std::filesystem::path& file, std::string_view content) {
    const auto folder = file.parent_path();
    auto draftPath = (folder / std::string{"."}.append(file.filename().string()).append(".XXXXXX")).string();
    const FileDescriptor draft{::mkostemp(draftPath.data(), O_CLOEXEC)};
    if (!draft) {
        return errno;
    }
    const int error = fillAndName(draft, draftPath.c_str(), file.c_str(), content);
    ::unlink(draftPath.c_str());
    const FileDescriptor opened{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (opened) {
        ::fsync(opened.get());
    }
    return error;
}

} // namespace kivo::platform
