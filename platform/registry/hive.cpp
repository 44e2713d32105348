#include "platform/registry/hive.h"

#include "platform/base/last_error.h"

#include <algorithm>
#include <optional>

namespace tarnel {
namespace {

bool exists(Database& database, KeyId key) {
    return database.query(Sql::KeyExists).bind(key).next();
}

/// What it means that nothing was found in `key`.
DWORD missing(Database& database, KeyId key, DWORD in_living_key) {
    return exists(database, key) ? in_living_key : ERROR_KEY_DELETED;
}

/// Takes the next name off `path`; empty at the end. Doubled and outer "\" count for nothing.
std::string_view next_level(std::string_view& path) {
    path.remove_prefix(std::min(path.find_first_not_of('\\'), path.size()));
    const std::string_view level = path.substr(0, path.find('\\'));
    path.remove_prefix(level.size());
    return level;
}

std::optional<KeyId> child(Database& database, KeyId parent, std::string_view name) {
    Query query = database.query(Sql::FindKey);
    query.bind(parent).bind(name);
    return query.next() ? std::optional(query.number(0)) : std::nullopt;
}

std::optional<KeyId> descendant(Database& database, KeyId key, std::string_view path) {
    std::optional<KeyId> found = key;
    for (auto level = next_level(path); found && !level.empty(); level = next_level(path)) {
        found = child(database, *found, level);
    }
    return found;
}

DWORD find(Database& database, KeyId from, std::string_view path, KeyId& key) {
    const auto found = descendant(database, from, path);
    if (found && (*found != from || exists(database, from))) {
        key = *found;
        return ERROR_SUCCESS;
    }
    return missing(database, from, ERROR_FILE_NOT_FOUND);
}

DWORD find_at_once(Database& database, KeyId from, std::string_view path, KeyId& key) {
    const Transaction reading(database, Sql::BeginReading);
    return find(database, from, path, key);
}

KeyId make_levels(Database& database, KeyId key, std::string_view path) {
    for (auto level = next_level(path); !level.empty(); level = next_level(path)) {
        if (const auto present = child(database, key, level)) {
            key = *present;
        } else {
            database.query(Sql::AddKey).bind(key).bind(level).next();
            key = database.last_id();
        }
    }
    return key;
}

void take(const Query& query, Value& value) {
    value.type = static_cast<DWORD>(query.number(0));
    const auto bytes = query.bytes(1);
    value.data.assign(bytes.begin(), bytes.end());
}

} // namespace

LONG Hive::find_key(KeyId from, std::string_view path, KeyId& key) {
    return store_.use(ERROR_FILE_NOT_FOUND,
                      [&](Database& database) { return find_at_once(database, from, path, key); });
}

LONG Hive::create_key(KeyId from, std::string_view path, KeyId& key, bool& created) {
    return store_.use(ERROR_ACCESS_DENIED, [&](Database& database) -> DWORD {
        created = false;
        const DWORD found = find_at_once(database, from, path, key);
        if (found != ERROR_FILE_NOT_FOUND) {
            return found;
        }
        Transaction transaction(database);
        if (!exists(database, from)) {
            return ERROR_KEY_DELETED;
        }
        std::string_view rest = path;
        const auto first = next_level(rest);
        if (kind_ == HiveKind::Machine && from == root_id && !child(database, from, first)) {
            return ERROR_INVALID_PARAMETER;
        }
        key = make_levels(database, from, path);
        transaction.commit();
        created = true;
        return ERROR_SUCCESS;
    });
}

LONG Hive::delete_key(KeyId from, std::string_view path) {
    return store_.use(ERROR_ACCESS_DENIED, [&](Database& database) -> DWORD {
        Transaction transaction(database);
        KeyId key = 0;
        if (const DWORD error = find(database, from, path, key)) {
            return error;
        }
        if (key == root_id || database.query(Sql::HasKeysBelow).bind(key).next()) {
            return ERROR_ACCESS_DENIED;
        }
        database.query(Sql::DeleteValues).bind(key).next();
        database.query(Sql::DeleteKey).bind(key).next();
        transaction.commit();
        return ERROR_SUCCESS;
    });
}

LONG Hive::key_at(KeyId key, DWORD index, std::string& name) {
    return store_.use(ERROR_NO_MORE_ITEMS, [&](Database& database) -> DWORD {
        Query query = database.query(Sql::KeyAt);
        if (!query.bind(key).bind(std::int64_t{index}).next()) {
            return missing(database, key, ERROR_NO_MORE_ITEMS);
        }
        name = query.text(0);
        return ERROR_SUCCESS;
    });
}

LONG Hive::read_value(KeyId key, std::string_view name, Value& value) {
    return store_.use(ERROR_FILE_NOT_FOUND, [&](Database& database) -> DWORD {
        Query query = database.query(Sql::ReadValue);
        if (!query.bind(key).bind(name).next()) {
            return missing(database, key, ERROR_FILE_NOT_FOUND);
        }
        take(query, value);
        return ERROR_SUCCESS;
    });
}

LONG Hive::write_value(KeyId key, std::string_view name, DWORD type, std::span<const BYTE> data) {
    return store_.use(ERROR_ACCESS_DENIED, [&](Database& database) -> DWORD {
        database.query(Sql::WriteValue)
            .bind(key)
            .bind(name)
            .bind(std::int64_t{type})
            .bind(data)
            .next();
        return database.changes() ? ERROR_SUCCESS : ERROR_KEY_DELETED;
    });
}

LONG Hive::delete_value(KeyId key, std::string_view name) {
    return store_.use(ERROR_ACCESS_DENIED, [&](Database& database) -> DWORD {
        database.query(Sql::DeleteValue).bind(key).bind(name).next();
        return database.changes() ? ERROR_SUCCESS : missing(database, key, ERROR_FILE_NOT_FOUND);
    });
}

LONG Hive::value_at(KeyId key, DWORD index, std::string& name, Value& value) {
    return store_.use(ERROR_NO_MORE_ITEMS, [&](Database& database) -> DWORD {
        Query query = database.query(Sql::ValueAt);
        if (!query.bind(key).bind(std::int64_t{index}).next()) {
            return missing(database, key, ERROR_NO_MORE_ITEMS);
        }
        name = query.text(2);
        take(query, value);
        return ERROR_SUCCESS;
    });
}

LONG Hive::check_writable() {
    return store_.use(ERROR_ACCESS_DENIED, [](Database& database) -> DWORD {
        return database.read_only() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    });
}

} // namespace tarnel
