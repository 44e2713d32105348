#include "bench/report.h"
#include "platform/companions/registry_key.h"
#include "platform/registry/registry.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

// Typed values through the registry against SQLite with prepared statements: the same log, the same
// promise that a write is on the disk when it returns.

namespace {

constexpr unsigned names = 20;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
}

std::string name_of(unsigned number) {
    return "Value " + std::to_string(number % names);
}

class Plain {
  public:
    explicit Plain(const std::string& path) {
        sqlite3_open(path.c_str(), &database_);
        sqlite3_exec(database_,
                     "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                     "CREATE TABLE settings(name TEXT PRIMARY KEY COLLATE NOCASE, number INTEGER)",
                     nullptr, nullptr, nullptr);
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

void measure(CRegistryKey& key, Plain& plain) {
    // Each write changes the value: SQLite would leave out one that does not.
    unsigned turn = 0;
    const auto write = [&](unsigned number) {
        if (!key.WriteValue(name_of(number).c_str(), ++turn)) {
            fail("writing");
        }
    };
    const auto plain_write = [&](unsigned number) { plain.write(name_of(number), ++turn); };
    bench::report(
        "f.registry.writes",
        bench::compare([&] { return rate(100, write); }, [&] { return rate(100, plain_write); }),
        "writes/s");

    for (unsigned number = 0; number < names; ++number) {
        key.WriteValue(name_of(number).c_str(), number);
        plain.write(name_of(number), number);
    }
    const auto read = [&](unsigned number) {
        if (key.GetValue(name_of(number).c_str(), names) != number % names) {
            fail("reading");
        }
    };
    const auto plain_read = [&](unsigned number) {
        if (plain.read(name_of(number)) != number % names) {
            fail("reading");
        }
    };
    bench::report("f.registry.reads",
                  bench::compare([&] { return rate(20'000, read); },
                                 [&] { return rate(20'000, plain_read); }),
                  "reads/s");
}

} // namespace

int main() {
    // In the current folder, which lies on a disk: the temporary folder may lie in memory.
    std::string pattern = std::filesystem::current_path() / "registry-bench-XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    ::setenv("TARNEL_REGISTRY_DIR", folder.c_str(), 1);
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Bench", 0, nullptr, 0, KEY_READ | KEY_WRITE,
                        nullptr, &key, nullptr) != 0) {
        fail("making a key");
    }
    CRegistryKey values(key, 1);
    Plain plain(folder / "plain.db");
    measure(values, plain);
    std::filesystem::remove_all(folder);
}
