#pragma once

#include "platform/sqlite/KeychainDatabase.hpp"
#include "platform/sqlite/KeychainFile.hpp"
#include "platform/sqlite/KeychainQuery.hpp"

#include <kivo/platform/Keychain.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace kivo::platform {

/// An item that a query has found.
struct FoundItem {
    Identity identity;
    std::int64_t id = 0;
};

/// The value that was read last, for the questions that a session asks again and again. The value follows the changes
/// that this keychain makes.
class LastRead {
public:
    LastRead() = default;
    LastRead(const LastRead&) = delete;
    LastRead& operator=(const LastRead&) = delete;

    ~LastRead() { forget(); }

    /// The value, if the query is the same and no process has changed the database since. Null otherwise.
    const std::string* find(const KeychainAttributes& query, KeychainFile& file) const {
        return query_ == query && isCurrent(file) ? &value_ : nullptr;
    }

    /// Keeps a value. `version` is older than the transaction in which the value was read: a change in between only
    /// makes the value be read once more.
    void keep(const KeychainAttributes& query, FoundItem item, const std::string& value, std::uint64_t connection,
              std::optional<DatabaseVersion> version) {
        forget();
        query_ = query;
        item_ = std::move(item);
        value_ = value;
        connection_ = connection;
        version_ = version;
    }

    void forget() {
        version_.reset();
        wipe(value_);
    }

    /// Call this function at the beginning of a transaction that may write: from then on until the commit no other
    /// process changes the database.
    void beginChange(KeychainFile& file) {
        isChanged_ = false;
        if (!isCurrent(file)) {
            forget();
        }
    }

    /// The kept item, if it has this identity, and the item's value. Only within a change.
    const FoundItem* itemWith(const Identity& identity) const {
        return version_ && item_.identity == identity ? &item_ : nullptr;
    }

    const std::string& value() const { return value_; }

    /// Tells that a transaction replaces the value of an item and leaves everything else as it is.
    void replace(std::int64_t id, const std::string& value) {
        isChanged_ = true;
        if (version_ && item_.id == id) {
            wipe(value_);
            value_ = value;
        }
    }

    /// Call this function after the commit. A commit of another process since then makes the value be forgotten.
    void endChange(KeychainFile& file) {
        const auto version = version_ ? file.database().version() : std::nullopt;
        if (version && file.database().commitsBetween(*version_, *version) == (isChanged_ ? 1 : 0)) {
            version_ = version;
        } else {
            forget();
        }
    }

private:
    bool isCurrent(KeychainFile& file) const {
        return version_ && connection_ == file.connections() && version_ == file.database().version();
    }

    KeychainAttributes query_;
    FoundItem item_;
    std::string value_;
    std::uint64_t connection_ = 0;
    /// Absent while nothing is kept.
    std::optional<DatabaseVersion> version_;
    bool isChanged_ = false;
};

} // namespace kivo::platform
