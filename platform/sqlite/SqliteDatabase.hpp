#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A prepared statement for one run: it is reset when this goes.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt* statement)
        : statement_{statement} {}

    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    /// Parameters are bound in order. The text must outlive the run.
    void bindText(std::string_view text);
    void bindBlob(std::string_view bytes);
    void bindInteger(std::int64_t number);
    void bindNull();

    /// SQLITE_ROW, SQLITE_DONE or an error.
    int step();

    /// Columns of the current row; text and bytes are valid until the next step.
    std::string_view bytes(int column) const;
    std::int64_t integer(int column) const;

private:
    sqlite3_stmt* const statement_;
    int bound_ = 0;
};

/// One open database, for one thread at a time.
class SqliteDatabase {
public:
    /// Opens an existing file, to read only where the file does not allow more, or gives the error.
    static std::expected<std::unique_ptr<SqliteDatabase>, int> open(const std::filesystem::path& file);

    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;
    ~SqliteDatabase();

    /// Until when statements wait for another process; from then on their error is SQLITE_BUSY.
    void setDeadline(std::chrono::steady_clock::time_point deadline) { deadline_ = deadline; }

    /// Runs statements that give no rows; SQLITE_OK or an error.
    int run(const char* statements);

    /// The first value that a query gives; absent on an error, which `lastError` then names.
    std::optional<std::int64_t> number(const std::string& query);
    std::optional<std::string> text(const std::string& query);

    /// A statement is compiled once. Absent on an error, which `lastError` then names.
    std::optional<SqliteStatement> prepare(const std::string& text);

    int lastError() const;

    /// The errno behind the last error, or 0.
    int systemError() const;

    /// Rows changed by the last statement.
    std::int64_t changes() const;

    /// Whether the file can only be read.
    bool isReadOnly() const;

    /// Whether the header asks for a format that SQLite does not write, as only damage makes it.
    bool hasUnknownFormat() const;

    bool isInTransaction() const;

private:
    explicit SqliteDatabase(sqlite3* connection);
    static int wait(void* self, int attempt);

    sqlite3* const connection_;
    std::chrono::steady_clock::time_point deadline_;
    std::map<std::string, sqlite3_stmt*> statements_;
};

} // namespace kivo::platform
