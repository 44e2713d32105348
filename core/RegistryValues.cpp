#include "core/RegistryValues.h"

#include "core/NumberConversion.h"

#include <cstring>
#include <string>

namespace {

/// Reads up to `size` bytes of the value; how many, or -1 when it is missing or longer.
int read_bytes(HKEY key, const char* name, void* bytes, DWORD size) {
    const LONG error =
        RegQueryValueExA(key, name, nullptr, nullptr, static_cast<BYTE*>(bytes), &size);
    return error ? -1 : static_cast<int>(size);
}

/// The value's bytes; false when it cannot be read.
bool read_text(HKEY key, const char* name, std::string& text) {
    LONG error = ERROR_MORE_DATA;
    // Somebody may store a longer one between asking and reading.
    while (error == ERROR_MORE_DATA) {
        DWORD size = 0;
        error = RegQueryValueExA(key, name, nullptr, nullptr, nullptr, &size);
        if (error == ERROR_SUCCESS) {
            text.resize(size);
            auto* const bytes = reinterpret_cast<BYTE*>(text.data());
            error = RegQueryValueExA(key, name, nullptr, nullptr, bytes, &size);
        }
    }
    return error == ERROR_SUCCESS;
}

/// The kind of the value, 0 when it is missing.
DWORD kind_of(HKEY key, const char* name) {
    DWORD type = 0;
    const LONG error = RegQueryValueExA(key, name, nullptr, &type, nullptr, nullptr);
    return error ? 0 : type;
}

int write(HKEY key, const char* name, DWORD type, const void* bytes, std::size_t size) {
    return key && RegSetValueExA(key, name, 0, type, static_cast<const BYTE*>(bytes),
                                 static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

} // namespace

CString GetRegistryValue(HKEY key, const char* name, const char* default_text) {
    std::string text;
    if (key && read_text(key, name, text)) {
        return text.c_str();
    }
    WriteRegistryValue(key, name, default_text);
    return default_text;
}

unsigned int GetRegistryValue(HKEY key, const char* name, int default_number) {
    unsigned int number = 0;
    if (key && read_bytes(key, name, &number, sizeof(number)) >= 0) {
        return number;
    }
    WriteRegistryValue(key, name, default_number);
    return static_cast<unsigned int>(default_number);
}

double GetRegistryValue(HKEY key, const char* name, double default_number) {
    if (!key) {
        return default_number;
    }
    if (kind_of(key, name) == REG_BINARY) {
        double number = 0;
        if (read_bytes(key, name, &number, sizeof(number)) == sizeof(number)) {
            return number;
        }
        WriteRegistryValue(key, name, default_number);
        return default_number;
    }
    char text[318];
    locale_independent::sprintf(text, "%lf", default_number);
    return locale_independent::atof(GetRegistryValue(key, name, text));
}

int WriteRegistryValue(HKEY key, const char* name, const char* text) {
    const char* const stored = text ? text : "";
    return write(key, name, REG_SZ, stored, std::strlen(stored) + 1);
}

int WriteRegistryValue(HKEY key, const char* name, int value) {
    return write(key, name, REG_DWORD, &value, sizeof(value));
}

int WriteRegistryValue(HKEY key, const char* name, double value) {
    char text[25];
    return WriteRegistryValue(key, name, locale_independent::_gcvt(value, 16, text));
}
