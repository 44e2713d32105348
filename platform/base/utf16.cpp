#include "platform/base/utf16.h"

#include <bit>
#include <cstddef>

namespace tarnel {
namespace {

constexpr bool is_high_half(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool is_low_half(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void append(std::string& text, char32_t code) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
        return;
    }
    if (code < 0x800) {
        put(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
    }
    put(0x80 | (code & 0x3F));
}

/// Takes the character at the front of `text` away; U+FFFD for a byte that begins none.
char32_t take_character(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    const int length = std::countl_one(lead);
    if (length == 0) {
        return lead;
    }
    const auto more = static_cast<std::size_t>(length - 1);
    if (length < 2 || length > 4 || more > text.size()) {
        return 0xFFFD;
    }
    char32_t code = lead & (0x7FU >> length);
    for (const char c : text.substr(0, more)) {
        if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) {
            return 0xFFFD;
        }
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10FFFF) {
        return 0xFFFD;
    }
    text.remove_prefix(more);
    return code;
}

} // namespace

std::string utf8_of(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code = text[i];
        if (is_high_half(code) && i + 1 < text.size() && is_low_half(text[i + 1])) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00U);
        }
        append(result, code);
    }
    return result;
}

std::u16string utf16_of(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const char32_t code = take_character(text);
        if (code < 0x10000) {
            result += static_cast<char16_t>(code);
        } else {
            result += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            result += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        }
    }
    return result;
}

} // namespace tarnel
