#pragma once

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A prepared statement for one run, at whose end the destructor resets the statement.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt* statement)
        : statement_{statement} {}

    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    /// Binds the next parameter. The text or bytes must outlive the run.
    /// An absent text is NULL.
    void bindText(std::optional<std::string_view> text);
    /// Absent bytes are NULL.
    void bindBlob(std::optional<std::string_view> bytes);
    void bindInteger(std::int64_t number);

    /// SQLITE_ROW, SQLITE_DONE or an error.
    int step();

    /// A column of the current row. The bytes are valid until the next step.
    std::string_view bytes(int column) const;
    std::int64_t integer(int column) const;

private:
    sqlite3_stmt* const statement_;
    int bound_ = 0;
};

/// Differs between two committed states of a database.
using DatabaseVersion = std::array<char, 48>;

/// One open database, for one thread at a time.
class SqliteDatabase {
public:
    enum class Access {
        /// Read-only when the file cannot be written.
        shared,
        /// Reads the file alone, without its log and without locks.
        fileAlone,
    };

    /// Opens an existing file. The error is SQLite's.
    static std::expected<std::unique_ptr<SqliteDatabase>, int> open(const std::filesystem::path& file, Access access);

    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;
    ~SqliteDatabase();

    /// The time until which statements wait for another process. After the deadline their error is SQLITE_BUSY.
    void setDeadline(std::chrono::steady_clock::time_point deadline) { deadline_ = deadline; }

    /// Runs statements that give no rows; SQLITE_OK or an error.
    int run(const char* statements);

    /// Runs a statement that gives no rows and is compiled at first use; SQLITE_OK or an error.
    int runAgain(const std::string& statement);

    /// Has every commit appended to a log beside the file, which needs no wait for the disk, where the system lets
    /// processes share the log. Elsewhere every commit waits for the disk, and `emptyLog` has nothing to do. SQLITE_OK
    /// or an error.
    int keepLog();

    /// Moves the commits from the log into the file and waits for the disk; SQLITE_OK or an error. The log is empty
    /// then, and the former values are overwritten.
    int emptyLog();

    /// The first value of a query's result; absent on an error, which `lastError` then names.
    std::optional<std::int64_t> number(const std::string& query);
    std::optional<std::string> text(const std::string& query);

    /// The statement with this text, which is compiled at first use. Absent on an error, which `lastError` then names.
    std::optional<SqliteStatement> prepare(const std::string& text);

    int lastError() const;

    /// The errno behind the last error, or 0.
    int systemError() const;

    /// Rows changed by the last statement.
    std::int64_t changes() const;

    /// Whether the file can only be read.
    bool isReadOnly() const;

    /// Whether the file's header names a format that SQLite never writes, which is a sign of damage.
    bool hasUnknownFormat() const;

    /// The bytes by which SQLite itself notices that another process has committed. Absent when they cannot be read.
    std::optional<DatabaseVersion> version() const;

    /// The number of commits by which one version follows another. Absent where commits are not counted.
    std::optional<std::uint32_t> commitsBetween(const DatabaseVersion& former, const DatabaseVersion& later) const;

    bool isInTransaction() const;

private:
    explicit SqliteDatabase(sqlite3* connection);
    /// Reads a piece of the file's header, past SQLite's cache and without a lock.
    bool readHeader(std::span<char> piece, sqlite3_int64 place) const;
    /// The open file; null when SQLite has none.
    sqlite3_file* file() const;
    static int wait(void* self, int attempt);

    sqlite3* const connection_;
    std::chrono::steady_clock::time_point deadline_;
    bool hasLog_ = false;
    std::map<std::string, sqlite3_stmt*> statements_;
};

/// The result of examining a keychain's database.
enum class KeychainState {
    sound,
    /// Empty: no item was ever stored.
    fresh,
    /// Made by a newer release of this library.
    newer,
    damaged,
    /// The database gave an error, which `lastError` names.
    unknown,
};

/// The mark of a database of this release. The mark contains the version of the format.
inline constexpr std::int64_t markOfThisRelease = 0x4B490001;

/// The mark of a database; absent on an error, which `lastError` names.
std::optional<std::int64_t> markOf(SqliteDatabase& database);

/// Examines the whole database: versions, tables, pages and indexes.
KeychainState examine(SqliteDatabase& database);

/// Fills a fresh database with its tables; SQLITE_OK or an error.
int createSchema(SqliteDatabase& database);

/// Whether an error of SQLite means that the file is damaged.
bool isDamage(int sqliteError);

} // namespace kivo::platform
