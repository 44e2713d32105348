#include "platform/registry/registry.h"

#include "platform/registry/key_table.h"

#include <algorithm>
#include <cstring>

namespace tarnel {
namespace {

std::string_view text_of(LPCSTR name) {
    return name ? name : "";
}

constexpr REGSAM write_access = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

/// Hands out a handle to `id`, unless it is to write in a hive that can only be read.
LONG hand_out(Hive& hive, KeyId id, REGSAM access, HKEY* result) {
    if (access & write_access) {
        if (const LONG error = hive.check_writable()) {
            return error;
        }
    }
    *result = add_key({&hive, id, access});
    return ERROR_SUCCESS;
}

/// Runs `work` on the key behind `handle` when it allows `access`.
template <typename Work>
LONG with_key(HKEY handle, REGSAM access, Work work) {
    const auto key = find_open_key(handle);
    if (!key) {
        return ERROR_INVALID_HANDLE;
    }
    return (key->access & access) == access ? work(*key) : static_cast<LONG>(ERROR_ACCESS_DENIED);
}

/// Gives what the caller asked for of `value`.
LONG hand_over(const Value& value, DWORD* type, BYTE* data, DWORD* size) {
    if (type) {
        *type = value.type;
    }
    if (!size) {
        return ERROR_SUCCESS;
    }
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data && room < *size) {
        return ERROR_MORE_DATA;
    }
    if (data) {
        std::copy(value.data.begin(), value.data.end(), data);
    }
    return ERROR_SUCCESS;
}

LONG hand_over_name(const std::string& text, LPSTR name, DWORD* length) {
    if (*length <= text.size()) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(name, text.c_str(), text.size() + 1);
    *length = static_cast<DWORD>(text.size());
    return ERROR_SUCCESS;
}

} // namespace

void close_registry() {
    user_hive().store().close();
    machine_hive().store().close();
}

} // namespace tarnel

using namespace tarnel;

LONG RegOpenKeyExA(HKEY key, LPCSTR sub, DWORD options, REGSAM access, HKEY* result) {
    if (options || !result) {
        return ERROR_INVALID_PARAMETER;
    }
    *result = nullptr;
    return with_key(key, 0, [&](const OpenKey& parent) -> LONG {
        KeyId id = 0;
        const LONG error = parent.hive->find_key(parent.id, text_of(sub), id);
        return error ? error : hand_out(*parent.hive, id, access, result);
    });
}

LONG RegCreateKeyExA(HKEY key, LPCSTR sub, DWORD reserved, LPSTR, DWORD options, REGSAM access,
                     LPVOID, HKEY* result, DWORD* disposition) {
    if (!sub || reserved || options != REG_OPTION_NON_VOLATILE || !result) {
        return ERROR_INVALID_PARAMETER;
    }
    *result = nullptr;
    return with_key(key, 0, [&](const OpenKey& parent) -> LONG {
        KeyId id = 0;
        bool created = false;
        if (const LONG error = parent.hive->create_key(parent.id, sub, id, created)) {
            return error;
        }
        if (disposition) {
            *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        }
        return hand_out(*parent.hive, id, access, result);
    });
}

LONG RegCloseKey(HKEY key) {
    const bool root = key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE;
    if (!root && !remove_key(key)) {
        return ERROR_INVALID_HANDLE;
    }
    return ERROR_SUCCESS;
}

LONG RegDeleteKeyA(HKEY key, LPCSTR sub) {
    if (!sub) {
        return ERROR_INVALID_PARAMETER;
    }
    return with_key(key, 0,
                    [&](const OpenKey& parent) { return parent.hive->delete_key(parent.id, sub); });
}

LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
    if (reserved || (data && !size)) {
        return ERROR_INVALID_PARAMETER;
    }
    return with_key(key, KEY_QUERY_VALUE, [&](const OpenKey& open) -> LONG {
        Value value;
        const LONG error = open.hive->read_value(open.id, text_of(name), value);
        return error ? error : hand_over(value, type, data, size);
    });
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size) {
    if (reserved || (!data && size)) {
        return ERROR_INVALID_PARAMETER;
    }
    return with_key(key, KEY_SET_VALUE, [&](const OpenKey& open) {
        return open.hive->write_value(open.id, text_of(name), type, {data, size});
    });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) {
    return with_key(key, KEY_SET_VALUE, [&](const OpenKey& open) {
        return open.hive->delete_value(open.id, text_of(name));
    });
}

LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, DWORD* length, DWORD* reserved, LPSTR type,
                   DWORD* type_length, LPVOID written) {
    if (!name || !length || reserved || type || type_length || written) {
        return ERROR_INVALID_PARAMETER;
    }
    return with_key(key, KEY_ENUMERATE_SUB_KEYS, [&](const OpenKey& open) -> LONG {
        std::string found;
        const LONG error = open.hive->key_at(open.id, index, found);
        return error ? error : hand_over_name(found, name, length);
    });
}

LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD* length, DWORD* reserved, DWORD* type,
                   BYTE* data, DWORD* size) {
    if (!name || !length || reserved || (data && !size)) {
        return ERROR_INVALID_PARAMETER;
    }
    return with_key(key, KEY_QUERY_VALUE, [&](const OpenKey& open) -> LONG {
        std::string found;
        Value value;
        if (const LONG error = open.hive->value_at(open.id, index, found, value)) {
            return error;
        }
        const LONG error = hand_over_name(found, name, length);
        return error ? error : hand_over(value, type, data, size);
    });
}
