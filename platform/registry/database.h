#pragma once

#include "platform/base/types.h"

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tarnel {

/// A call to the database failed. Never leaves the registry's room.
struct DatabaseError {
    int code; ///< SQLite's primary result code

    bool damaged() const { return code == SQLITE_CORRUPT || code == SQLITE_NOTADB; }
};

/// The statements that a connection keeps prepared.
enum class Sql {
    FindKey,
    KeyExists,
    AddKey,
    HasKeysBelow,
    DeleteKey,
    DeleteValues,
    KeyAt,
    ReadValue,
    WriteValue,
    DeleteValue,
    ValueAt,
    BeginReading,
    Begin,
    Commit,
    RollBack,
    Count
};

/// One run of a statement, from binding to its last row. The bound texts and bytes outlive it.
class Query {
  public:
    explicit Query(sqlite3_stmt* statement) : statement_(statement) {}

    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    ~Query();

    Query& bind(std::int64_t number);
    Query& bind(std::string_view text);
    Query& bind(std::span<const BYTE> bytes);

    /// The next row; false at the end.
    bool next();

    /// Columns of the row, valid until the next one.
    std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }

    std::string_view text(int column) const;
    std::span<const BYTE> bytes(int column) const;

  private:
    sqlite3_stmt* const statement_;
    int bound_ = 0;
};

/// A connection to a database file. Used by one thread at a time.
class Database {
  public:
    enum class Create { No, Yes };

    Database(const std::string& path, Create create);
    Database(Database&&) = default;
    Database& operator=(Database&&) = default;
    ~Database();

    /// Runs statements that give nothing.
    void execute(const char* statements);

    /// The first column of the first row.
    std::string ask(const char* question);

    /// Starts a kept statement; one run of it at a time.
    Query query(Sql statement);

    int changes() const { return sqlite3_changes(connection_.get()); }

    std::int64_t last_id() const { return sqlite3_last_insert_rowid(connection_.get()); }

    bool read_only() const { return sqlite3_db_readonly(connection_.get(), "main") != 0; }

    /// Whether the path no longer leads to the file that was opened.
    bool moved() const;

  private:
    struct Close {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };

    struct Finish {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    using Statement = std::unique_ptr<sqlite3_stmt, Finish>;

    void check(int code) const;
    Statement prepare(const char* text) const;

    std::unique_ptr<sqlite3, Close> connection_;
    std::array<Statement, static_cast<std::size_t>(Sql::Count)> statements_;
};

/// Several changes that are made together, rolled back unless committed; or several reads that see
/// one state, and lock the file once.
class Transaction {
  public:
    explicit Transaction(Database& database, Sql begin = Sql::Begin);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

  private:
    Database& database_;
    bool open_ = true;
};

} // namespace tarnel
