#pragma once

namespace support {

/// Sanitizers make everything slower: what a test does so many times, it does less often then.
constexpr int slow_build_divisor =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    10;
#else
    1;
#endif

} // namespace support
