#include "tools/setting_types.h"

#include "tools/settings_store.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

[[noreturn]] void refuse(const std::string& value, const char* what) {
    fail(exit_bad_setting_name, fmt::format("'{}' is no {}.", value, what));
}

template <typename Number>
Number number_of(const std::string& text, const char* what) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(static_cast<double>(number))) {
        refuse(text, what);
    }
    return number;
}

std::vector<unsigned char> bytes_of(const std::string& digits) {
    std::vector<unsigned char> bytes;
    const char* const end = digits.data() + digits.size();
    for (const char* pair = digits.data(); pair != end; pair += 2) {
        const char* const next = std::min(pair + 2, end);
        if (std::from_chars(pair, next, bytes.emplace_back(), 16).ptr != pair + 2) {
            refuse(digits, "row of bytes with two hexadecimal digits each");
        }
    }
    return bytes;
}

std::string read_bytes(LocalMachineRegistry& from, LPCSTR section, LPCSTR entry) {
    unsigned char* data = nullptr;
    unsigned int size = 0;
    from.GetProfileBinary(section, entry, &data, &size);
    const std::unique_ptr<unsigned char[]> bytes(data);
    return fmt::format("{:02x}", fmt::join(data, data + size, ""));
}

constexpr SettingType types[] = {
    {"text",
     [](auto& to, auto section, auto entry, auto& value) {
         return to.WriteProfileStringA(section, entry, value.c_str());
     },
     [](auto& from, auto section, auto entry) -> std::string {
         return from.GetProfileStringA(section, entry, "").GetString();
     }},
    {"int",
     [](auto& to, auto section, auto entry, auto& value) {
         return to.WriteProfileInt(section, entry,
                                   number_of<int>(value, "whole number of 32 bits"));
     },
     [](auto& from, auto section, auto entry) {
         return std::to_string(static_cast<int>(from.GetProfileIntA(section, entry, 0)));
     }},
    {"double",
     [](auto& to, auto section, auto entry, auto& value) {
         return to.WriteProfileDouble(section, entry, number_of<double>(value, "number"));
     },
     [](auto& from, auto section, auto entry) {
         return fmt::to_string(from.GetProfileDouble(section, entry, 0));
     }},
    {"binary",
     [](auto& to, auto section, auto entry, auto& value) {
         auto bytes = bytes_of(value);
         return to.WriteProfileBinary(section, entry, bytes.data(),
                                      static_cast<unsigned>(bytes.size()));
     },
     &read_bytes},
};

} // namespace

std::span<const SettingType> setting_types() {
    return types;
}
