#include "platform/registry/key_table.h"

#include "platform/base/never_destroyed.h"

#include <mutex>
#include <unordered_map>

namespace tarnel {
namespace {

struct KeyTable {
    std::mutex keys_lock;
    std::unordered_map<HKEY, OpenKey> open;
    std::uintptr_t last_number = 0;
};

KeyTable& table() {
    static NeverDestroyed<KeyTable> instance;
    return instance.get();
}

} // namespace

HKEY add_key(const OpenKey& key) {
    KeyTable& keys = table();
    const std::lock_guard guard(keys.keys_lock);
    keys.last_number += 4; // the two lowest bits stay zero, as everywhere on the system
    const auto handle = reinterpret_cast<HKEY>(keys.last_number);
    keys.open.emplace(handle, key);
    return handle;
}

std::optional<OpenKey> find_open_key(HKEY handle) {
    if (handle == HKEY_CURRENT_USER) {
        return OpenKey{&user_hive(), root_id, KEY_ALL_ACCESS};
    }
    if (handle == HKEY_LOCAL_MACHINE) {
        return OpenKey{&machine_hive(), root_id, KEY_ALL_ACCESS};
    }
    KeyTable& keys = table();
    const std::lock_guard guard(keys.keys_lock);
    const auto place = keys.open.find(handle);
    return place == keys.open.end() ? std::nullopt : std::optional(place->second);
}

bool remove_key(HKEY handle) {
    KeyTable& keys = table();
    const std::lock_guard guard(keys.keys_lock);
    return keys.open.erase(handle) != 0;
}

} // namespace tarnel
