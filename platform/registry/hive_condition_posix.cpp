#include "platform/registry/hive_condition.h"
#include "platform/registry/store.h"

#include <unistd.h>

#include <algorithm>

namespace tarnel {
namespace {

namespace fs = std::filesystem;

bool is_there(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool may_write_to(const fs::path& folder) {
    return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

/// Missing folders are made as well.
bool can_be_made_in(fs::path folder) {
    while (!is_there(folder) && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    std::error_code error;
    return fs::is_directory(folder, error) && may_write_to(folder);
}

HiveCondition condition_of_file(const fs::path& path) {
    Database database(path, Database::Create::No);
    database.execute(be_impatient);
    if (database.ask("PRAGMA integrity_check(1)") != "ok") {
        return HiveCondition::damaged;
    }
    const std::string version = database.ask("PRAGMA user_version");
    if (version != hive_version) { // of a hive that somebody began to make, it is 0
        return version == "0" ? HiveCondition::absent : HiveCondition::unreadable;
    }
    const bool writable = !database.read_only() && may_write_to(path.parent_path());
    return writable ? HiveCondition::good : HiveCondition::read_only;
}

HiveCondition condition_of(const fs::path& path) {
    if (path.empty()) {
        return HiveCondition::no_place;
    }
    if (!is_there(path)) {
        return can_be_made_in(path.parent_path()) ? HiveCondition::absent : HiveCondition::not_made;
    }
    try {
        return condition_of_file(path);
    } catch (const DatabaseError& error) {
        return error.damaged()             ? HiveCondition::damaged
               : error.code == SQLITE_BUSY ? HiveCondition::busy
                                           : HiveCondition::unreadable;
    }
}

/// Without their logs and journals.
std::vector<std::string> files_set_aside(const fs::path& path) {
    std::vector<std::string> aside;
    std::error_code error;
    for (fs::directory_iterator entry(path.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        const std::string mark = path.filename().string() + damaged_mark;
        if (name.starts_with(mark) &&
            name.find_first_not_of("0123456789", mark.size()) == name.npos) {
            aside.push_back(entry->path());
        }
    }
    std::sort(aside.begin(), aside.end());
    return aside;
}

} // namespace

HiveReport examine_hive(HKEY root) {
    const auto path = hive_path(root == HKEY_CURRENT_USER ? HiveKind::User : HiveKind::Machine);
    return {condition_of(path), path, files_set_aside(path)};
}

} // namespace tarnel
