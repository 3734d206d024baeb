#include "platform/linux/DeviceIdentifier.hpp"

#include "platform/posix/PrivateFolder.hpp"
#include "platform/posix/QuotedPath.hpp"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <string_view>

namespace kivo::platform {
namespace {

constexpr auto fileName = "device-id";
constexpr auto damagedFileName = "device-id.damaged";
constexpr std::size_t uuidLength = 36;
constexpr std::chrono::seconds patience{5};

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

DeviceIdentifier failure(const DataFolder& where, const FileProblem& problem) {
    const auto file = quoted(where.path() / fileName);
    if (problem.error == 0) {
        return {std::nullopt, "The device identifier " + file + " is not used: " + problem.refusal};
    }
    return {std::nullopt, "The device identifier " + file + " cannot be read or made (" + problem.text() +
                              "); give this user write permission for the folder."};
}

} // namespace

DeviceIdentifier readOrCreateDeviceIdentifier(const DataFolder& where) {
    const auto folder = PrivateFolder::open(where, PrivateFolder::Missing::isMade);
    if (!folder) {
        return failure(where, folder.error());
    }
    const auto lock = folder->lock(std::chrono::steady_clock::now() + patience);
    if (!lock) {
        return failure(where, lock.error());
    }
    std::array<unsigned char, 64> text{};
    const auto length = folder->read(fileName, text);
    if (!length && length.error().error != ENOENT) {
        return failure(where, length.error());
    }
    DeviceIdentifier result;
    if (length) {
        result.identifier = parsedUuid({reinterpret_cast<const char*>(text.data()), *length});
        if (result.identifier) {
            return result;
        }
        if (const int error = folder->rename(fileName, damagedFileName); error != 0) {
            return failure(where, {.error = error});
        }
        result.problem = "The device identifier " + quoted(where.path() / fileName) + " was damaged; it is kept as " +
                         quoted(where.path() / damagedFileName) +
                         " and a new one was made. Restore the file from a backup to keep the former identifier.";
    }
    const auto uuid = randomUuid();
    if (const int error = uuid ? folder->create(fileName, *uuid + "\n") : errno; error != 0) {
        return failure(where, {.error = error});
    }
    result.identifier = uuid;
    return result;
}

} // namespace kivo::platform
