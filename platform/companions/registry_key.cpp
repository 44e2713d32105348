#include "platform/companions/registry_key.h"

#include <cstring>
#include <string>

namespace {

/// The text value; false when there is none.
bool read_text(HKEY key, const char* name, std::string& text) {
    LONG error = ERROR_MORE_DATA;
    // Another process may store a longer text between asking and reading.
    while (error == ERROR_MORE_DATA) {
        DWORD type = 0;
        DWORD size = 0;
        error = RegQueryValueExA(key, name, nullptr, &type, nullptr, &size);
        if (error != ERROR_SUCCESS || type != REG_SZ) {
            return false;
        }
        text.resize(size);
        error = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()),
                                 &size);
        text.resize(std::min<std::size_t>(size, text.size()));
        if (error == ERROR_SUCCESS && type != REG_SZ) {
            return false;
        }
    }
    return error == ERROR_SUCCESS;
}

} // namespace

CRegistryKey::~CRegistryKey() {
    if (close_) {
        RegCloseKey(key_);
    }
}

CString CRegistryKey::GetValue(const char* name, const char* default_text) const {
    std::string text;
    return read_text(key_, name, text) ? text.c_str() : default_text;
}

unsigned int CRegistryKey::GetValue(const char* name, unsigned int default_number) const {
    DWORD type = 0;
    BYTE data[sizeof(DWORD)];
    DWORD size = sizeof(data);
    const LONG error = RegQueryValueExA(key_, name, nullptr, &type, data, &size);
    if (error != ERROR_SUCCESS || type != REG_DWORD || size != sizeof(data)) {
        return default_number;
    }
    DWORD number = 0;
    std::memcpy(&number, data, sizeof(number));
    return number;
}

BOOL CRegistryKey::WriteValue(const char* name, const char* text) {
    const char* stored = text ? text : "";
    return RegSetValueExA(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(stored),
                          static_cast<DWORD>(std::strlen(stored) + 1)) == ERROR_SUCCESS;
}

BOOL CRegistryKey::WriteValue(const char* name, DWORD number) {
    BYTE data[sizeof(number)];
    std::memcpy(data, &number, sizeof(number));
    return RegSetValueExA(key_, name, 0, REG_DWORD, data, sizeof(data)) == ERROR_SUCCESS;
}
