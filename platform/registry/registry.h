#pragma once

#include "platform/base/export.h"
#include "platform/base/last_error.h"
#include "platform/base/types.h"

#include <cstdint>

// Registry keys and values. Each hive is one database file: that of the user in
// $XDG_CONFIG_HOME/tarnel (else ~/.config/tarnel), that of the machine in /var/lib/tarnel, or both
// in the folder that TARNEL_REGISTRY_DIR names. Any number of processes may use them at a time.
//
// Names compare without regard to the case of ASCII letters and keep their first spelling; "\"
// separates levels; a null or empty value name is the unnamed value. All functions return an error
// code and leave the last error alone. They may be called from any thread. A value that was
// reported written survives the end of the process and the loss of power.
//
// Besides what stands at the functions: ERROR_INVALID_HANDLE for what is no open key,
// ERROR_KEY_DELETED for a key that was deleted meanwhile, ERROR_ACCESS_DENIED for what the handle
// or the file's rights do not allow, ERROR_BUSY when another process blocks a hive for 5 seconds,
// ERROR_REGISTRY_IO_FAILED when the disk fails. A hive that is missing and cannot be made, or
// cannot be opened, reads as empty.

using HKEY = struct HKEY__*;
using REGSAM = DWORD;

// Sign-extended numbers. Keys live in the hives of the user and of the machine.
const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(std::intptr_t{-0x80000000LL});
const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::intptr_t{-0x7FFFFFFFLL});
const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::intptr_t{-0x7FFFFFFELL});

constexpr REGSAM KEY_QUERY_VALUE = 0x1;
constexpr REGSAM KEY_SET_VALUE = 0x2;
constexpr REGSAM KEY_CREATE_SUB_KEY = 0x4;
constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x8;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WRITE = 0x20006;
constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_MULTI_SZ = 7;

constexpr DWORD REG_OPTION_NON_VOLATILE = 0;

constexpr DWORD REG_CREATED_NEW_KEY = 1;
constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

/// Opens `sub` below `key` ("" or null: `key` once more); the caller closes `*result`.
/// ERROR_FILE_NOT_FOUND when it is missing. `options` is 0.
TARNEL_PLATFORM_API LONG RegOpenKeyExA(HKEY key, LPCSTR sub, DWORD options, REGSAM access,
                                       HKEY* result);

/// Opens `sub` below `key`, made with all its missing levels; the caller closes `*result`.
/// `disposition`, if not null, receives REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY. Whether a
/// key may be made is up to the hive's file, not to the access of `key`. ERROR_INVALID_PARAMETER
/// for a null `sub`, a new key directly below HKEY_LOCAL_MACHINE and any option but
/// REG_OPTION_NON_VOLATILE. `type` and `attributes` are not kept.
TARNEL_PLATFORM_API LONG RegCreateKeyExA(HKEY key, LPCSTR sub, DWORD reserved, LPSTR type,
                                         DWORD options, REGSAM access, LPVOID attributes,
                                         HKEY* result, DWORD* disposition);

/// Closes what was opened; a root key may be closed and stays usable.
TARNEL_PLATFORM_API LONG RegCloseKey(HKEY key);

/// Deletes `sub` ("": `key` itself) with its values. ERROR_ACCESS_DENIED while it has keys below
/// it, and for a root key; ERROR_FILE_NOT_FOUND when it is missing.
TARNEL_PLATFORM_API LONG RegDeleteKeyA(HKEY key, LPCSTR sub);

/// The value's type, bytes and size as stored; each pointer may be null, but not `size` alone when
/// `data` is given. `*size` comes in as the room in `data`. ERROR_MORE_DATA with the needed size
/// when the room is too small, ERROR_FILE_NOT_FOUND when the value is missing. Text comes without
/// a terminating zero when it was stored so.
TARNEL_PLATFORM_API LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD* reserved, DWORD* type,
                                          BYTE* data, DWORD* size);

/// Stores `size` bytes, over whatever value of that name there was; those of a text should include
/// its terminating zero.
TARNEL_PLATFORM_API LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type,
                                        const BYTE* data, DWORD size);

/// ERROR_FILE_NOT_FOUND when there is no such value.
TARNEL_PLATFORM_API LONG RegDeleteValueA(HKEY key, LPCSTR name);

/// The name of the key number `index` below `key`, in the order of the names. `*length` comes in
/// as the room in `name` with the zero and goes out as the length without it. ERROR_MORE_DATA when
/// the room is too small, ERROR_NO_MORE_ITEMS at the end. The last four are null: neither classes
/// nor times are kept.
TARNEL_PLATFORM_API LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, DWORD* length,
                                       DWORD* reserved, LPSTR type, DWORD* type_length,
                                       LPVOID written);

/// The value number `index` of `key`, in the order of the names: its name as in RegEnumKeyExA, the
/// rest as in RegQueryValueExA.
TARNEL_PLATFORM_API LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD* length,
                                       DWORD* reserved, DWORD* type, BYTE* data, DWORD* size);

namespace tarnel {

/// Closes both hives; the next call opens them again, where TARNEL_REGISTRY_DIR says then. All keys
/// must have been closed.
TARNEL_PLATFORM_API void close_registry();

} // namespace tarnel
