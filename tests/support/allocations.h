#pragma once

#include <cstddef>

namespace support {

/// How often the program has allocated so far, in any library; linked only into programs that ask.
std::size_t allocations();

} // namespace support
