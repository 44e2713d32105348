#include "platform/modules/utf8.h"

#include <algorithm>
#include <bit>

namespace tarnel {

namespace {

constexpr bool is_continuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

constexpr bool is_text(unsigned char byte) {
    return byte >= ' ' ? byte != 0x7F : byte >= '\t' && byte <= '\r';
}

/// Length of the character at the front of `bytes`, 0 when there is no whole and valid one.
std::size_t character_length(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    if (lead < 0x80) {
        return is_text(lead) ? 1 : 0;
    }
    const auto length = static_cast<std::size_t>(std::countl_one(lead));
    if (length < 2 || length > 4 || length > bytes.size()) {
        return 0;
    }
    char32_t code = lead & (0x7FU >> length);
    for (const char c : bytes.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if (!is_continuation(byte)) {
            return 0;
        }
        code = code << 6U | (byte & 0x3FU);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= smallest[length] && code <= 0x10FFFF && !surrogate ? length : 0;
}

} // namespace

std::size_t text_prefix(std::string_view bytes) {
    std::size_t prefix = 0;
    while (prefix < bytes.size()) {
        const std::size_t length = character_length(bytes.substr(prefix));
        if (length == 0) {
            break;
        }
        prefix += length;
    }
    return prefix;
}

std::size_t count_characters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return !is_continuation(static_cast<unsigned char>(c));
    }));
}

} // namespace tarnel
