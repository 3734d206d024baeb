#include "platform/camera/VideoDevices.hpp"

#include "platform/posix/FileDescriptor.hpp"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <charconv>
#include <map>
#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

/// The number in "video7".
std::optional<int> deviceNumber(const fs::path& device) {
    const auto name = device.filename().string();
    constexpr std::string_view prefix = "video";
    int number = 0;
    const auto* const end = name.data() + name.size();
    if (!name.starts_with(prefix)) {
        return std::nullopt;
    }
    const auto parsed = std::from_chars(name.data() + prefix.size(), end, number);
    return parsed.ec == std::errc{} && parsed.ptr == end ? std::optional{number} : std::nullopt;
}

/// Cameras also have devices for other things than pictures.
bool givesPictures(const fs::path& device) {
    const FileDescriptor file{::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    if (!file) {
        return errno == EACCES || errno == EPERM || errno == EBUSY;
    }
    v4l2_capability capability{};
    return ::ioctl(file.get(), VIDIOC_QUERYCAP, &capability) == 0 &&
           (capability.device_caps & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
}

} // namespace

std::optional<fs::path> firstVideoDevice(const fs::path& devices) {
    std::map<int, fs::path> numbered;
    std::error_code error;
    for (fs::directory_iterator entry{devices, error}, end; entry != end && !error; entry.increment(error)) {
        if (const auto number = deviceNumber(entry->path())) {
            numbered.emplace(*number, entry->path());
        }
    }
    for (const auto& [number, device] : numbered) {
        if (givesPictures(device)) {
            return device;
        }
    }
    return std::nullopt;
}

std::string cameraPipeline(const fs::path& device) {
    return "v4l2src device=" + device.string() +
           " ! decodebin ! videoscale ! video/x-raw,width=[1,1280],height=[1,1280],pixel-aspect-ratio=1/1";
}

} // namespace kivo::platform
