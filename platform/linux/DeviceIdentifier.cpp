#include "linux/DeviceIdentifier.hpp"

#include "linux/FileDescriptor.hpp"
#include "linux/QuotedPath.hpp"
#include "linux/WholeFile.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t uuidLength = 36;

std::string reason(int error) {
    return " (" + std::generic_category().message(error) + ")";
}

std::optional<std::string> parsedUuid(std::string_view text) {
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    if (text.size() != uuidLength) {
        return std::nullopt;
    }
    std::string uuid{text};
    for (std::size_t i = 0; i < uuidLength; ++i) {
        auto& character = uuid[i];
        const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
        if (character >= 'a' && character <= 'f') {
            character = static_cast<char>(character - 'a' + 'A');
        }
        if (isDash ? character != '-' : !std::string_view{"0123456789ABCDEF"}.contains(character)) {
            return std::nullopt;
        }
    }
    return uuid;
}

std::optional<std::string> randomUuid() {
    std::array<unsigned char, 16> bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0) {
        return std::nullopt;
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    std::string uuid;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        uuid += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        uuid += digits[bytes[i] >> 4];
        uuid += digits[bytes[i] & 0x0F];
    }
    return uuid;
}

/// The steps towards an identifier; each returns an error number, 0 for success.
class IdentifierFile {
public:
    explicit IdentifierFile(const fs::path& folder)
        : folder_{folder}
        , path_{folder / "device-id"}
        , damagedPath_{folder / "device-id.damaged"} {}

    DeviceIdentifier readOrCreate() {
        // Another process may create, damage or put aside the file between two steps; each round starts over.
        for (int round = 0; round < 8; ++round) {
            int error = read();
            if (error == ENOENT) {
                error = create();
                if (error == EEXIST) {
                    continue;
                }
            }
            if (error != 0) {
                return {std::nullopt, "The device identifier " + quoted(path_) + " cannot be read or made" +
                                          reason(error) + "; give this user write permission for the folder."};
            }
            if (identifier_) {
                return {identifier_, problem_};
            }
        }
        return {std::nullopt, "The device identifier " + quoted(path_) + " keeps changing; look for what writes it."};
    }

private:
    // Leaves the identifier absent when the file was damaged and has been put aside.
    int read() {
        const FileDescriptor file{::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
        if (!file) {
            return errno;
        }
        std::array<char, 64> text{};
        const auto size = ::read(file.get(), text.data(), text.size());
        if (size < 0) {
            return errno;
        }
        identifier_ = parsedUuid({text.data(), static_cast<std::size_t>(size)});
        return identifier_ ? 0 : putAside(file);
    }

    // Only who has locked the damaged file itself may move it, so nobody moves its replacement.
    int putAside(const FileDescriptor& file) {
        if (::flock(file.get(), LOCK_EX) != 0) {
            return errno;
        }
        struct stat opened{};
        struct stat named{};
        if (::fstat(file.get(), &opened) != 0 || ::stat(path_.c_str(), &named) != 0 || opened.st_ino != named.st_ino ||
            opened.st_dev != named.st_dev) {
            return 0;
        }
        if (::rename(path_.c_str(), damagedPath_.c_str()) != 0) {
            return errno;
        }
        problem_ = "The device identifier " + quoted(path_) + " was damaged; it is kept as " + quoted(damagedPath_) +
                   " and a new one was made. Restore the file from a backup to keep the former identifier.";
        return 0;
    }

    // EEXIST when another process was first.
    int create() {
        std::error_code error;
        fs::create_directories(folder_.parent_path(), error);
        if (::mkdir(folder_.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
            return errno;
        }
        const auto uuid = randomUuid();
        if (!uuid) {
            return errno;
        }
        const int result = createWholeFile(path_, *uuid + "\n");
        if (result == 0) {
            identifier_ = uuid;
        }
        return result;
    }

    fs::path folder_;
    fs::path path_;
    fs::path damagedPath_;
    std::optional<std::string> identifier_;
    std::string problem_;
};

} // namespace

DeviceIdentifier readOrCreateDeviceIdentifier(const fs::path& folder) {
    if (folder.empty()) {
        return {std::nullopt, "There is no data folder for the device identifier; set HOME or XDG_DATA_HOME."};
    }
    return IdentifierFile{folder}.readOrCreate();
}

} // namespace kivo::platform
