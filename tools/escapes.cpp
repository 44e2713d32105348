#include "tools/escapes.h"

#include "tools/line_settings.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

/// The character after "\x", which takes two more; nothing when it is no such thing.
std::optional<char> from_hex(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return digits.size() == 2 && error == std::errc() && end == digits.data() + 2
               ? std::optional(static_cast<char>(value))
               : std::nullopt;
}

} // namespace

std::string unescape(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find('\\'), text.size());
        bytes += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const char kind = text.size() > 1 ? text[1] : '\0';
        const std::size_t known = std::string_view("rnt\\").find(kind);
        const auto hex = kind == 'x' ? from_hex(text.substr(2, 2)) : std::nullopt;
        if (known == std::string_view::npos && !hex) {
            fail(exit_bad_setting,
                 fmt::format("'{}' is unknown: write \\r, \\n, \\t, \\\\ or \\xNN.", text));
        }
        bytes += hex ? *hex : "\r\n\t\\"[known];
        text.remove_prefix(hex ? 4 : 2);
    }
    return bytes;
}
