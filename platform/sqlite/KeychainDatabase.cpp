#include "platform/sqlite/KeychainDatabase.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace kivo::platform {
namespace {

constexpr std::chrono::milliseconds firstPause{1};
constexpr std::chrono::milliseconds longestPause{50};

// The header holds the version twice, so that a damaged number does not pass for the version of a newer release.
constexpr std::int64_t formatVersion = 1;
constexpr std::int64_t applicationBase = markOfThisRelease - formatVersion;

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

// An index repeats every column that no seal protects: the check of the database compares the index with the table.
constexpr auto createAttributes = "CREATE INDEX attributes ON items(generic, accessible)";

constexpr auto actualSchema =
    "SELECT group_concat(type || ' ' || name || ' ' || tbl_name || ' ' || coalesce(sql, ''), ';') "
    "FROM (SELECT * FROM sqlite_master ORDER BY rowid)";

/// Whether a finding of SQLite's check is only a page that the system could not read. The page itself may be sound.
bool tellsOfUnreadPage(std::string_view finding) {
    const auto damage = "error code=" + std::to_string(SQLITE_CORRUPT);
    return (finding.contains("unable to get the page") && !finding.ends_with(damage)) ||
           finding.contains("failed to get page");
}

/// The address of a file, as SQLite reads addresses.
std::string addressOf(const std::filesystem::path& file) {
    std::string address = "file:";
    for (const char c : file.string()) {
        if (std::string_view{"%?#"}.contains(c)) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            address.append(
                {'%', digits[static_cast<unsigned char>(c) / 16], digits[static_cast<unsigned char>(c) % 16]});
        } else {
            address += c;
        }
    }
    return address;
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string whole;
    for (const auto part : parts) {
        whole += part;
    }
    return whole;
}

std::string expectedSchema() {
    return joined({"table items items ", createItems, ";index sqlite_autoindex_items_1 items ;",
                   "index attributes items ", createAttributes});
}

} // namespace

SqliteStatement::~SqliteStatement() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void SqliteStatement::bindText(std::optional<std::string_view> text) {
    // SQLite takes a pointer to nothing for NULL.
    const auto place = text.value_or(std::string_view{});
    sqlite3_bind_text64(statement_, ++bound_, place.data(), place.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void SqliteStatement::bindBlob(std::optional<std::string_view> bytes) {
    const auto place = bytes.value_or(std::string_view{});
    sqlite3_bind_blob64(statement_, ++bound_, place.data(), place.size(), SQLITE_STATIC);
}

void SqliteStatement::bindInteger(std::int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
}

int SqliteStatement::step() {
    return sqlite3_step(statement_);
}

std::string_view SqliteStatement::bytes(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {data != nullptr ? data : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::int64_t SqliteStatement::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::expected<std::unique_ptr<SqliteDatabase>, int> SqliteDatabase::open(const std::filesystem::path& file,
                                                                         Access access) {
    const bool isShared = access == Access::shared;
    const auto name = isShared ? file.string() : addressOf(file) + "?immutable=1";
    const int flags = isShared ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    sqlite3* connection = nullptr;
    const int error =
        sqlite3_open_v2(name.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW, nullptr);
    if (error != SQLITE_OK) {
        sqlite3_close(connection);
        return std::unexpected{error};
    }
    return std::unique_ptr<SqliteDatabase>{new SqliteDatabase{connection}};
}

SqliteDatabase::SqliteDatabase(sqlite3* connection)
    : connection_{connection} {
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_handler(connection, &SqliteDatabase::wait, this);
}

int SqliteDatabase::wait(void* self, int attempt) {
    const auto left = static_cast<SqliteDatabase*>(self)->deadline_ - std::chrono::steady_clock::now();
    if (left.count() <= 0) {
        return 0;
    }
    const auto pause = std::min<std::chrono::nanoseconds>(firstPause * (attempt + 1), longestPause);
    std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(pause, left));
    return 1;
}

SqliteDatabase::~SqliteDatabase() {
    // The last process to close the database moves the log into the file.
    if (hasLog_) {
        run("PRAGMA synchronous = NORMAL");
    }
    for (const auto& [text, statement] : statements_) {
        sqlite3_finalize(statement);
    }
    sqlite3_close(connection_);
}

int SqliteDatabase::run(const char* statements) {
    return sqlite3_exec(connection_, statements, nullptr, nullptr, nullptr);
}

int SqliteDatabase::runAgain(const std::string& statement) {
    auto prepared = prepare(statement);
    const int result = prepared ? prepared->step() : lastError();
    return result == SQLITE_DONE ? SQLITE_OK : result;
}

int SqliteDatabase::keepLog() {
    const auto mode = text("PRAGMA journal_mode = WAL");
    if (!mode) {
        return lastError();
    }
    hasLog_ = *mode == "wal";
    // A commit appends to the log and waits for nothing: the log has the commits in their order, and a checksum tells
    // where a power cut has ended it. SQLite moves the log into the file when this class says so.
    return run(hasLog_ ? "PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 0"
                       : "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL");
}

int SqliteDatabase::emptyLog() {
    if (!hasLog_) {
        return SQLITE_OK;
    }
    int error = run("PRAGMA synchronous = NORMAL");
    for (int attempt = 0; error == SQLITE_OK; ++attempt) {
        const auto isBusy = number("PRAGMA wal_checkpoint(TRUNCATE)");
        if (isBusy == 0) {
            break;
        }
        error = !isBusy ? lastError() : SQLITE_OK;
        // SQLite does not wait for another process that is emptying the log.
        if (isBusy && wait(this, attempt) == 0) {
            error = SQLITE_BUSY;
        }
    }
    run("PRAGMA synchronous = OFF");
    return error;
}

std::optional<std::int64_t> SqliteDatabase::number(const std::string& query) {
    auto statement = prepare(query);
    if (!statement || statement->step() != SQLITE_ROW) {
        return std::nullopt;
    }
    return statement->integer(0);
}

std::optional<std::string> SqliteDatabase::text(const std::string& query) {
    auto statement = prepare(query);
    if (!statement || statement->step() != SQLITE_ROW) {
        return std::nullopt;
    }
    return std::string{statement->bytes(0)};
}

std::optional<SqliteStatement> SqliteDatabase::prepare(const std::string& text) {
    auto& statement = statements_[text];
    if (statement == nullptr && sqlite3_prepare_v3(connection_, text.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                                                   nullptr) != SQLITE_OK) {
        return std::nullopt;
    }
    return std::optional<SqliteStatement>{std::in_place, statement};
}

int SqliteDatabase::lastError() const {
    return sqlite3_extended_errcode(connection_);
}

int SqliteDatabase::systemError() const {
    // SQLite keeps no error number of a failed write, but errno still holds the number.
    const int kept = sqlite3_system_errno(connection_);
    return kept != 0 ? kept : errno;
}

std::int64_t SqliteDatabase::changes() const {
    return sqlite3_changes64(connection_);
}

bool SqliteDatabase::isReadOnly() const {
    return sqlite3_db_readonly(connection_, "main") == 1;
}

sqlite3_file* SqliteDatabase::file() const {
    sqlite3_file* opened = nullptr;
    sqlite3_file_control(connection_, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&opened));
    return opened != nullptr && opened->pMethods != nullptr ? opened : nullptr;
}

bool SqliteDatabase::readHeader(std::span<char> piece, sqlite3_int64 place) const {
    sqlite3_file* const opened = file();
    return opened != nullptr &&
           opened->pMethods->xRead(opened, piece.data(), static_cast<int>(piece.size()), place) == SQLITE_OK;
}

bool SqliteDatabase::hasUnknownFormat() const {
    constexpr unsigned char newestFormat = 2;
    constexpr sqlite3_int64 placeOfFormat = 18;
    std::array<char, 1> format{};
    return readHeader(format, placeOfFormat) && static_cast<unsigned char>(format[0]) > newestFormat;
}

std::optional<DatabaseVersion> SqliteDatabase::version() const {
    constexpr sqlite3_int64 placeOfChangeCounter = 24;
    constexpr int sizeOfIndexPart = 32 * 1024;
    DatabaseVersion version{};
    if (!hasLog_) {
        return readHeader(std::span{version}.first(16), placeOfChangeCounter) ? std::optional{version} : std::nullopt;
    }
    // The log's index, which processes share in memory, begins with a counter of commits and a checksum.
    sqlite3_file* const opened = file();
    volatile void* index = nullptr;
    if (opened == nullptr || opened->pMethods->xShmMap(opened, 0, sizeOfIndexPart, 0, &index) != SQLITE_OK ||
        index == nullptr) {
        return std::nullopt;
    }
    std::ranges::copy_n(static_cast<const volatile char*>(index), version.size(), version.begin());
    return version;
}

std::optional<std::uint32_t> SqliteDatabase::commitsBetween(const DatabaseVersion& former,
                                                            const DatabaseVersion& later) const {
    if (!hasLog_) {
        return std::nullopt;
    }
    const auto counter = [](const DatabaseVersion& version) {
        constexpr std::size_t placeInIndex = 8;
        std::uint32_t commits = 0;
        std::memcpy(&commits, version.data() + placeInIndex, sizeof commits);
        return commits;
    };
    return counter(later) - counter(former);
}

bool SqliteDatabase::isInTransaction() const {
    return sqlite3_get_autocommit(connection_) == 0;
}

std::optional<std::int64_t> markOf(SqliteDatabase& database) {
    return database.number("PRAGMA application_id");
}

KeychainState examine(SqliteDatabase& database) {
    const auto version = database.number("PRAGMA user_version");
    const auto application = markOf(database);
    const auto schema = database.text(actualSchema);
    if (!version || !application || !schema) {
        // A failed query is no proof of damage.
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
        joined({"BEGIN IMMEDIATE;", createItems, ";", createAttributes, ";", createVersion, ";COMMIT"});
    return database.run(statements.c_str());
}

bool isDamage(int sqliteError) {
    switch (sqliteError & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    // The statements are correct, so the fault lies in the tables or in the format.
    case SQLITE_ERROR:
    case SQLITE_MISMATCH:
        return true;
    default:
        return false;
    }
}

} // namespace kivo::platform
