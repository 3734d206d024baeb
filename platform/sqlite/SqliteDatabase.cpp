#include "platform/sqlite/SqliteDatabase.hpp"

#include <algorithm>
#include <cerrno>
#include <thread>

namespace kivo::platform {
namespace {

constexpr std::chrono::milliseconds firstPause{1};
constexpr std::chrono::milliseconds longestPause{50};

} // namespace

SqliteStatement::~SqliteStatement() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void SqliteStatement::bindText(std::string_view text) {
    sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void SqliteStatement::bindBlob(std::string_view bytes) {
    sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(), SQLITE_STATIC);
}

void SqliteStatement::bindInteger(std::int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
}

void SqliteStatement::bindNull() {
    sqlite3_bind_null(statement_, ++bound_);
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

std::expected<std::unique_ptr<SqliteDatabase>, int> SqliteDatabase::open(const std::filesystem::path& file) {
    sqlite3* connection = nullptr;
    const int error = sqlite3_open_v2(file.c_str(), &connection,
                                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW, nullptr);
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
    for (const auto& [text, statement] : statements_) {
        sqlite3_finalize(statement);
    }
    sqlite3_close(connection_);
}

int SqliteDatabase::run(const char* statements) {
    return sqlite3_exec(connection_, statements, nullptr, nullptr, nullptr);
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
    // SQLite keeps no number for a write that failed; errno still holds it.
    const int kept = sqlite3_system_errno(connection_);
    return kept != 0 ? kept : errno;
}

std::int64_t SqliteDatabase::changes() const {
    return sqlite3_changes64(connection_);
}

bool SqliteDatabase::isReadOnly() const {
    return sqlite3_db_readonly(connection_, "main") == 1;
}

bool SqliteDatabase::hasUnknownFormat() const {
    constexpr unsigned char newestFormat = 2;
    constexpr sqlite3_int64 placeOfFormat = 18;
    sqlite3_file* file = nullptr;
    unsigned char format = 0;
    return sqlite3_file_control(connection_, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file)) ==
               SQLITE_OK &&
           file != nullptr && file->pMethods != nullptr &&
           file->pMethods->xRead(file, &format, 1, placeOfFormat) == SQLITE_OK && format > newestFormat;
}

bool SqliteDatabase::isInTransaction() const {
    return sqlite3_get_autocommit(connection_) == 0;
}

} // namespace kivo::platform
