#pragma once

#include "bench/report.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// Settings kept by hand: one SQLite table, a prepared statement for each kind of access.

namespace bench {

constexpr unsigned names = 20;

[[noreturn]] inline void fail(const char* what) {
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
}

inline std::string name_of(unsigned number) {
    return "Value " + std::to_string(number % names);
}

class Plain {
  public:
    Plain(const std::string& path, const std::string& journal_mode) {
        sqlite3_open(path.c_str(), &database_);
        const std::string text =
            "PRAGMA journal_mode = " + journal_mode +
            "; PRAGMA synchronous = FULL;"
            "CREATE TABLE settings(name TEXT PRIMARY KEY COLLATE NOCASE, number INTEGER)";
        sqlite3_exec(database_, text.c_str(), nullptr, nullptr, nullptr);
        read_ = prepare("SELECT number FROM settings WHERE name = ?");
        write_ = prepare("INSERT INTO settings VALUES(?, ?)"
                         " ON CONFLICT DO UPDATE SET number = excluded.number");
    }

    unsigned read(const std::string& name) {
        sqlite3_bind_text(read_, 1, name.c_str(), -1, SQLITE_STATIC);
        if (sqlite3_step(read_) != SQLITE_ROW) {
            fail("reading");
        }
        const auto number = static_cast<unsigned>(sqlite3_column_int64(read_, 0));
        sqlite3_reset(read_);
        return number;
    }

    void write(const std::string& name, unsigned number) {
        sqlite3_bind_text(write_, 1, name.c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_int64(write_, 2, number);
        if (sqlite3_step(write_) != SQLITE_DONE) {
            fail("writing");
        }
        sqlite3_reset(write_);
    }

  private:
    sqlite3_stmt* prepare(const char* text) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(database_, text, -1, &statement, nullptr) != SQLITE_OK) {
            fail(text);
        }
        return statement;
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* read_ = nullptr;
    sqlite3_stmt* write_ = nullptr;
};

/// Calls a second of `call(number)`.
template <typename Call>
double rate(unsigned count, Call call) {
    return count / bench::seconds([&] {
               for (unsigned number = 0; number < count; ++number) {
                   call(number);
               }
           });
}

} // namespace bench
