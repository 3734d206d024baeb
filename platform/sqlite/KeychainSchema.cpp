#include "platform/sqlite/KeychainSchema.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace kivo::platform {
namespace {

// The version stands in the header twice, so that a damaged number is not taken for a newer release's.
constexpr std::int64_t formatVersion = 1;
constexpr std::int64_t applicationBase = 0x4B490000;

constexpr auto createVersion = "PRAGMA user_version = 1; PRAGMA application_id = 0x4B490001";

constexpr auto createItems = R"(CREATE TABLE items(
    id INTEGER PRIMARY KEY,
    class TEXT NOT NULL,
    service TEXT NOT NULL,
    account TEXT NOT NULL,
    access_group TEXT NOT NULL,
    generic TEXT,
    accessible TEXT,
    value BLOB NOT NULL,
    UNIQUE(class, service, account, access_group)))";

// Every column that no seal protects stands in an index as well: the check of the database compares the two.
constexpr auto createAttributes = "CREATE INDEX attributes ON items(generic, accessible)";

constexpr auto actualSchema =
    "SELECT group_concat(type || ' ' || name || ' ' || tbl_name || ' ' || coalesce(sql, ''), ';') "
    "FROM (SELECT * FROM sqlite_master ORDER BY rowid)";

/// SQLite's check of a database reports a page that the system could not read like any other finding. The page itself
/// may be sound.
bool tellsOfUnreadPage(std::string_view finding) {
    const auto damage = "error code=" + std::to_string(SQLITE_CORRUPT);
    return (finding.contains("unable to get the page") && !finding.ends_with(damage)) ||
           finding.contains("failed to get page");
}

std::string expectedSchema() {
    return std::string{"table items items "} + createItems + ";index sqlite_autoindex_items_1 items ;" +
           "index attributes items " + createAttributes;
}

} // namespace

KeychainState examine(SqliteDatabase& database) {
    const auto version = database.number("PRAGMA user_version");
    const auto application = database.number("PRAGMA application_id");
    const auto schema = database.text(actualSchema);
    if (!version || !application || !schema) {
        // Only damage counts as damage: a look that could not be taken says nothing about the file.
        return isDamage(database.lastError()) ? KeychainState::damaged : KeychainState::unknown;
    }
    if (*version == 0 && *application == 0 && schema->empty()) {
        return KeychainState::fresh;
    }
    if (*application != applicationBase + *version) {
        return KeychainState::damaged;
    }
    if (*version > formatVersion) {
        return KeychainState::newer;
    }
    if (*version != formatVersion || *schema != expectedSchema()) {
        return KeychainState::damaged;
    }
    const auto check = database.text("PRAGMA integrity_check(1)");
    if (!check) {
        return isDamage(database.lastError()) ? KeychainState::damaged : KeychainState::unknown;
    }
    if (tellsOfUnreadPage(*check)) {
        return KeychainState::unknown;
    }
    return *check == "ok" ? KeychainState::sound : KeychainState::damaged;
}

int createSchema(SqliteDatabase& database) {
    const auto statements =
        std::string{"BEGIN IMMEDIATE;"} + createItems + ";" + createAttributes + ";" + createVersion + ";COMMIT";
    return database.run(statements.c_str());
}

bool isDamage(int sqliteError) {
    switch (sqliteError & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    // The statements are right; so the tables or the format are not.
    case SQLITE_ERROR:
    case SQLITE_MISMATCH:
        return true;
    default:
        return false;
    }
}

} // namespace kivo::platform
