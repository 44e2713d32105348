#pragma once

#include <string>
#include <string_view>

namespace tarnel {

/// What old programs write: Latin-1, and parts in other character sets that are announced by escape
/// sequences. Parts in Latin-1 and UTF-8 are taken over, any other character becomes '?'.
std::string utf8_from_compound_text(std::string_view text);

/// Copies at most `size` - 1 bytes, whole characters only, and a zero; how many.
int copy_text(std::string_view text, char* buffer, int size);

} // namespace tarnel
