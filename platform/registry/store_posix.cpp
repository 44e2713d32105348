#include "platform/base/last_error.h"
#include "platform/registry/folder_lock.h"
#include "platform/registry/hive_condition.h"
#include "platform/registry/store.h"

#include <atomic>
#include <chrono>
#include <cstdlib>

namespace tarnel {
namespace {

namespace fs = std::filesystem;

// An id is never given again, so that a handle to a deleted key is recognised.
constexpr const char* schema =
    "CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " name TEXT NOT NULL COLLATE NOCASE, UNIQUE(parent, name));"
    "CREATE TABLE key_values(key INTEGER NOT NULL, name TEXT NOT NULL COLLATE NOCASE,"
    " type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, name)) WITHOUT ROWID;"
    "INSERT INTO keys(id, parent, name) VALUES(1, 0, '');";

constexpr const char* machine_keys =
    "INSERT INTO keys(id, parent, name) VALUES(2, 1, 'SOFTWARE'), (3, 1, 'HARDWARE'),"
    " (4, 3, 'DEVICEMAP'), (5, 4, 'SERIALCOMM');";

std::atomic<bool> kept_as_they_are = false;

/// The folder for the user's settings, empty when the environment names none.
fs::path user_folder() {
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config == '/') {
        return fs::path(config) / "tarnel";
    }
    if (const char* home = std::getenv("HOME"); home && *home) {
        return fs::path(home) / ".config" / "tarnel";
    }
    return {};
}

bool file_exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

/// The hive as it usually is, or none when it is new; throws when it is damaged.
std::optional<Database> open_complete(const fs::path& path, HiveKind kind) {
    if (!file_exists(path)) {
        return {};
    }
    Database database(path, Database::Create::No);
    if (kept_as_they_are) {
        database.execute(be_impatient);
    }
    if (database.ask("PRAGMA user_version") != hive_version) {
        return {};
    }
    // A commit is on the disk when it returns: in the log, or with the journal gone from the
    // folder.
    database.execute(kind == HiveKind::User ? "PRAGMA synchronous = FULL"
                                            : "PRAGMA synchronous = EXTRA");
    return database;
}

void make_hive(const fs::path& path, HiveKind kind) {
    Database database(path, Database::Create::Yes);
    if (kind == HiveKind::User) {
        database.execute("PRAGMA journal_mode = WAL");
    }
    Transaction transaction(database);
    database.execute(schema);
    if (kind == HiveKind::Machine) {
        database.execute(machine_keys);
    }
    database.execute((std::string("PRAGMA user_version = ") + hive_version).c_str());
    transaction.commit();
}

bool is_damaged(const fs::path& path) {
    try {
        return file_exists(path) &&
               Database(path, Database::Create::No).ask("PRAGMA integrity_check(1)") != "ok";
    } catch (const DatabaseError& error) {
        return error.damaged();
    }
}

/// Renames the file and what belongs to it; the news of it, or of why it could not be.
std::string set_aside(const fs::path& path) {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    const auto stamp = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    const std::string aside = path.string() + damaged_mark + std::to_string(stamp);
    std::error_code error;
    for (const char* part : {"-wal", "-journal"}) {
        fs::rename(path.string() + part, aside + part, error);
    }
    fs::remove(path.string() + "-shm", error);
    fs::rename(path, aside, error);
    return error ? "registry: " + path.string() + " is damaged and cannot be renamed"
                 : "registry: " + path.string() + " is damaged; kept as " + aside;
}

/// Makes the hive, or a new one in the place of a damaged one, unless another process just did.
std::optional<Database> establish(const fs::path& path, HiveKind kind, std::string& news) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    const FolderLock lock(path.parent_path());
    if (lock.error() == ERROR_BUSY) {
        throw DatabaseError{SQLITE_BUSY};
    }
    if (lock.error()) {
        return {};
    }
    if (is_damaged(path)) {
        news = set_aside(path);
    }
    if (auto database = open_complete(path, kind)) {
        return database;
    }
    make_hive(path, kind);
    return open_complete(path, kind);
}

} // namespace

void keep_hives_as_they_are() {
    kept_as_they_are = true;
}

fs::path hive_path(HiveKind kind) {
    const char* name = kind == HiveKind::User ? "user.db" : "machine.db";
    if (const char* folder = std::getenv("TARNEL_REGISTRY_DIR"); folder && *folder) {
        return fs::path(folder) / name;
    }
    const fs::path folder = kind == HiveKind::User ? user_folder() : "/var/lib/tarnel";
    return folder.empty() ? folder : folder / name;
}

std::optional<Database> open_hive(HiveKind kind, bool suspect, std::string& news) {
    const fs::path path = hive_path(kind);
    if (path.empty()) {
        return {};
    }
    try {
        if (!suspect) {
            if (auto database = open_complete(path, kind)) {
                return database;
            }
        }
    } catch (const DatabaseError& error) {
        if (error.code == SQLITE_BUSY) {
            throw;
        }
    }
    if (kept_as_they_are) {
        return {};
    }
    try {
        return establish(path, kind, news);
    } catch (const DatabaseError& error) {
        if (error.code == SQLITE_BUSY) {
            throw;
        }
        if (news.empty() && file_exists(path)) {
            news = "registry: " + path.string() + " cannot be opened";
        }
        return {};
    }
}

} // namespace tarnel
