#pragma once

#include "platform/posix/PrivateFolder.hpp"

#include <array>
#include <ctime>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The ends of the names of a database's files. The database comes last: a new database must never find the log or the
/// journal of an old database.
inline constexpr std::array databaseSuffixes{"-journal", "-wal", "-shm", ""};

inline std::string timestamp() {
    const auto now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

/// A mark for the names of files that are put aside, with the time and, if need be, a number that no other file of the
/// folder has.
inline std::string freeMark(const PrivateFolder& folder, const std::string& name, std::string_view state) {
    const auto mark = std::string{"."}.append(state).append("-").append(timestamp());
    auto candidate = mark;
    for (int number = 2; folder.has((name + candidate).c_str()) != false && number < 100; ++number) {
        candidate = mark + "-" + std::to_string(number);
    }
    return candidate;
}

} // namespace kivo::platform
