#pragma once

#include "platform/sqlite/SqliteDatabase.hpp"

namespace kivo::platform {

/// What a keychain's database turns out to be.
enum class KeychainState {
    sound,
    /// Empty: nothing was ever stored.
    fresh,
    /// Made by a newer release of this library.
    newer,
    damaged,
    /// The database gave an error, which `lastError` names.
    unknown,
};

/// Looks through the whole database: versions, tables, pages and indexes.
KeychainState examine(SqliteDatabase& database);

/// Fills a fresh database with its tables; SQLITE_OK or an error.
int createSchema(SqliteDatabase& database);

/// Whether an error of SQLite means that the file is damaged.
bool isDamage(int sqliteError);

} // namespace kivo::platform
