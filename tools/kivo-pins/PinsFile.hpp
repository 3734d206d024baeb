#pragma once

#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/posix/Files.hpp"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace pins {

/// The list in a file, with its faults, or nothing when there is no such file. The error is a sentence about a file
/// that cannot be read as a property list.
std::expected<std::optional<kivo::PinList>, std::string> readList(const std::filesystem::path& file);

/// A list that is being changed. While the object lives, other processes that change a list of the same folder wait.
class ListUnderChange {
public:
    /// Waits some seconds for other processes. The error is a sentence.
    static std::expected<ListUnderChange, std::string> open(const std::filesystem::path& file);

    /// Replaces the file's content, in one step, and keeps mode and owner of the file. Where `file` is a symbolic link,
    /// the link stays and its target changes. Returns an error as a sentence, or an empty text.
    std::string write(const std::vector<std::string>& pins) const;

private:
    ListUnderChange(std::filesystem::path file, std::filesystem::path target, kivo::platform::FileDescriptor folder)
        : file_{std::move(file)}
        , target_{std::move(target)}
        , folder_{std::move(folder)} {}

    std::filesystem::path file_;
    std::filesystem::path target_;
    kivo::platform::FileDescriptor folder_;
};

} // namespace pins
