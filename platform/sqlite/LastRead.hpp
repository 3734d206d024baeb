#pragma once

#include "platform/sqlite/KeychainDatabase.hpp"
#include "platform/sqlite/KeychainFile.hpp"

#include <kivo/platform/Keychain.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace kivo::platform {

/// The value that was read last, for the questions that a session asks again and again.
class LastRead {
public:
    LastRead() = default;
    LastRead(const LastRead&) = delete;
    LastRead& operator=(const LastRead&) = delete;

    ~LastRead() { forget(); }

    /// The value, if the query is the same and no process has changed the database since. Null otherwise.
    const std::string* find(const KeychainAttributes& query, KeychainFile& file) const {
        const bool isSame =
            version_ && connection_ == file.connections() && query_ == query && version_ == file.database().version();
        return isSame ? &value_ : nullptr;
    }

    /// Keeps a value. `version` is older than the transaction in which the value was read: a change in between only
    /// makes the value be read once more.
    void keep(const KeychainAttributes& query, const std::string& value, std::uint64_t connection,
              std::optional<DatabaseVersion> version) {
        forget();
        query_ = query;
        value_ = value;
        connection_ = connection;
        version_ = version;
    }

    void forget() {
        version_.reset();
        wipe(value_);
    }

private:
    KeychainAttributes query_;
    std::string value_;
    std::uint64_t connection_ = 0;
    /// Absent while nothing is kept.
    std::optional<DatabaseVersion> version_;
};

} // namespace kivo::platform
