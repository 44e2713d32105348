#pragma once

#include <string>
#include <string_view>

namespace tarnel {

/// `text` in UTF-8. A half of a surrogate pair on its own is written as if it were a character, so
/// that utf16_of gives back every text.
std::string utf8_of(std::u16string_view text);

/// `text` in UTF-16; a byte that belongs to no character becomes U+FFFD.
std::u16string utf16_of(std::string_view text);

} // namespace tarnel
