#pragma once

#include <filesystem>
#include <utility>

namespace kivo::platform {

/// Where an application's secrets are kept. Empty when the user has no such place.
struct DataFolder {
    DataFolder(std::filesystem::path folder, std::filesystem::path below = {})
        : base{std::move(folder)}
        , own{std::move(below)} {}

    std::filesystem::path path() const { return own.empty() ? base : base / own; }

    /// A folder that the user or the host has chosen.
    std::filesystem::path base;
    /// Folders below it that are this library's alone.
    std::filesystem::path own;
};

} // namespace kivo::platform
