#include "platform/registry/ini_profile.h"

#include "platform/base/last_error.h"
#include "platform/base/letter_case.h"
#include "platform/registry/ini_document.h"
#include "platform/registry/ini_file.h"
#include "platform/registry/ini_index.h"
#include "platform/registry/store.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnel {
namespace {

/// Where `file` lies, empty when there is no place for it.
std::string place_of(LPCSTR file) {
    if (!file || *file == '/') {
        return file ? file : "";
    }
    const auto folder = hive_path(HiveKind::User).parent_path();
    return folder.empty() ? "" : folder / file;
}

/// Copies as much as there is room for in front of `zeros` closing ones; how much that was.
DWORD hand_over(std::string_view text, DWORD zeros, LPSTR buffer, DWORD size) {
    if (!buffer || size == 0) {
        return 0;
    }
    const std::size_t count = text.copy(buffer, size - std::min(zeros, size));
    std::fill_n(buffer + count, std::min<std::size_t>(zeros, size - count), '\0');
    return static_cast<DWORD>(count);
}

/// Names with a zero each, and one more at the end.
DWORD hand_over_list(std::string_view names, LPSTR buffer, DWORD size) {
    const bool has_last_zero = !names.empty() && names.size() < size;
    return hand_over(names, has_last_zero ? 1 : 2, buffer, size);
}

std::string section_names(const IniIndex& index) {
    std::string names;
    for (const auto& section : index.sections()) {
        names.append(section.name) += '\0';
    }
    return names;
}

std::optional<std::string> key_names(const IniIndex& index, std::string_view name) {
    for (const auto& section : index.sections()) {
        if (same_but_for_case(section.name, name)) {
            std::string names;
            for (const std::string_view key : section.keys) {
                names.append(key) += '\0';
            }
            return names;
        }
    }
    return {};
}

std::optional<std::string_view> find_value(const IniIndex* index, LPCSTR section, LPCSTR key) {
    return index && section && key ? index->value(without_blanks(section), without_blanks(key))
                                   : std::nullopt;
}

/// The number at the start of `text`, as many of its bits as there is room for.
UINT leading_number(std::string_view text) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    UINT number = 0;
    for (const char c : text) {
        UINT digit = 0;
        const UINT base = hexadecimal ? 16 : 10;
        if (std::from_chars(&c, &c + 1, digit, static_cast<int>(base)).ec != std::errc()) {
            break;
        }
        number = number * base + digit;
    }
    return negative ? 0 - number : number;
}

bool can_be_read_again(std::string_view section, std::string_view key, std::string_view value) {
    return section.find_first_of("]\r\n") == section.npos &&
           key.find_first_of("=\r\n") == key.npos && !key.starts_with('[') &&
           !key.starts_with(';') && value.find_first_of("\r\n") == value.npos;
}

/// Does what the null arguments mean; whether that changed something.
bool change(IniDocument& document, std::string_view section, LPCSTR key, LPCSTR value) {
    if (!key) {
        return document.remove_section(section);
    }
    if (!value) {
        return document.remove_key(section, without_blanks(key));
    }
    document.set(section, without_blanks(key), value);
    return true;
}

} // namespace
} // namespace tarnel

using namespace tarnel;

DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR default_text, LPSTR buffer,
                               DWORD size, LPCSTR file) {
    const auto index = ini_index(place_of(file));
    if (index && (!section || !key)) {
        const auto names =
            section ? key_names(*index, without_blanks(section)) : section_names(*index);
        if (names) {
            return hand_over_list(*names, buffer, size);
        }
    } else if (const auto value = find_value(index.get(), section, key)) {
        return hand_over(*value, 1, buffer, size);
    }
    const std::string_view text = default_text ? default_text : "";
    return hand_over(text.substr(0, text.find_last_not_of(' ') + 1), 1, buffer, size);
}

UINT GetPrivateProfileIntA(LPCSTR section, LPCSTR key, int default_number, LPCSTR file) {
    const auto index = ini_index(place_of(file));
    const auto value = find_value(index.get(), section, key);
    return value ? leading_number(*value) : static_cast<UINT>(default_number);
}

BOOL WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR file) {
    const std::string path = place_of(file);
    if (!section || !file ||
        !can_be_read_again(section, key ? without_blanks(key) : "", value ? value : "")) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (*file != '/') {
        std::error_code error; // shows when the file is written
        std::filesystem::create_directories(hive_path(HiveKind::User).parent_path(), error);
    }
    const DWORD error = change_file(path, [&](std::string& bytes) {
        IniDocument document(bytes);
        const bool changed = change(document, without_blanks(section), key, value);
        bytes = document.bytes();
        return changed;
    });
    if (error) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}
