#include "platform/registry/database.h"

namespace tarnel {
namespace {

constexpr int patience_in_milliseconds = 5'000; // with other processes that hold the file

// In the order of Sql. A change of a value finds out by itself whether its key is still there.
constexpr std::array<const char*, static_cast<std::size_t>(Sql::Count)> statement_texts = {
    "SELECT id FROM keys WHERE parent = ? AND name = ?",
    "SELECT 1 FROM keys WHERE id = ?",
    "INSERT INTO keys(parent, name) VALUES(?, ?)",
    "SELECT 1 FROM keys WHERE parent = ? LIMIT 1",
    "DELETE FROM keys WHERE id = ?",
    "DELETE FROM key_values WHERE key = ?",
    "SELECT name FROM keys WHERE parent = ? ORDER BY name LIMIT 1 OFFSET ?",
    "SELECT type, data FROM key_values WHERE key = ? AND name = ?",
    "INSERT INTO key_values(key, name, type, data)"
    " SELECT ?1, ?2, ?3, ?4 WHERE EXISTS(SELECT 1 FROM keys WHERE id = ?1)"
    " ON CONFLICT DO UPDATE SET type = excluded.type, data = excluded.data",
    "DELETE FROM key_values WHERE key = ? AND name = ?",
    "SELECT type, data, name FROM key_values WHERE key = ? ORDER BY name LIMIT 1 OFFSET ?",
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
};

} // namespace

Query::~Query() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

Query& Query::bind(std::int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
    return *this;
}

Query& Query::bind(std::string_view text) {
    sqlite3_bind_text64(statement_, ++bound_, text.data() ? text.data() : "", text.size(),
                        SQLITE_STATIC, SQLITE_UTF8);
    return *this;
}

Query& Query::bind(std::span<const BYTE> bytes) {
    // A null pointer would bind NULL.
    const void* data = bytes.empty() ? "" : static_cast<const void*>(bytes.data());
    sqlite3_bind_blob64(statement_, ++bound_, data, bytes.size(), SQLITE_STATIC);
    return *this;
}

bool Query::next() {
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        throw DatabaseError{code & 0xFF};
    }
    return code == SQLITE_ROW;
}

std::string_view Query::text(int column) const {
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::span<const BYTE> Query::bytes(int column) const {
    const auto* data = static_cast<const BYTE*>(sqlite3_column_blob(statement_, column));
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

Database::Database(const std::string& path, Create create) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX |
                      (create == Create::Yes ? SQLITE_OPEN_CREATE : 0);
    sqlite3* connection = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    connection_.reset(connection);
    check(code);
    sqlite3_busy_timeout(connection, patience_in_milliseconds);
}

Database::~Database() = default;

void Database::execute(const char* statements) {
    check(sqlite3_exec(connection_.get(), statements, nullptr, nullptr, nullptr));
}

std::string Database::ask(const char* question) {
    const Statement statement = prepare(question);
    Query query(statement.get());
    return query.next() ? std::string(query.text(0)) : std::string();
}

Query Database::query(Sql statement) {
    const auto place = static_cast<std::size_t>(statement);
    if (!statements_[place]) {
        statements_[place] = prepare(statement_texts[place]);
    }
    return Query(statements_[place].get());
}

bool Database::moved() const {
    int moved = 0;
    sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

void Database::check(int code) const {
    if (code != SQLITE_OK) {
        throw DatabaseError{code & 0xFF};
    }
}

Database::Statement Database::prepare(const char* text) const {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v3(connection_.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                             nullptr));
    return Statement(statement);
}

Transaction::Transaction(Database& database, Sql begin) : database_(database) {
    database_.query(begin).next();
}

Transaction::~Transaction() {
    try {
        if (open_) {
            database_.query(Sql::RollBack).next();
        }
    } catch (const DatabaseError&) {
        // SQLite has rolled it back by itself.
    }
}

void Transaction::commit() {
    database_.query(Sql::Commit).next();
    open_ = false;
}

} // namespace tarnel
