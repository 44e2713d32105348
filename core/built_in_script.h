#pragma once

#include <string_view>

namespace tarnel {

// The bytes of resources/TarnelToolBoxLib.rc, embedded at build time.
extern const unsigned char built_in_script_bytes[];
extern const std::size_t built_in_script_bytes_size;

/// The library's own resource script.
inline std::string_view built_in_script() {
    return {reinterpret_cast<const char*>(built_in_script_bytes), built_in_script_bytes_size};
}

} // namespace tarnel
