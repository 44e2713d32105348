#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel {

/// Length in bytes of the longest part at the front of `bytes` that is UTF-8 text without control
/// characters other than white space.
std::size_t text_prefix(std::string_view bytes);

/// Number of characters in `text`, which is UTF-8.
std::size_t count_characters(std::string_view text);

} // namespace tarnel
