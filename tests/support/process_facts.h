#pragma once

#include <cstddef>

namespace support {

/// What a process must have as many of after a test as before it.
struct ProcessFacts {
    std::size_t threads;
    std::size_t descriptors;
    std::size_t handles;
    std::size_t library_mappings; ///< of the library under test

    friend bool operator==(const ProcessFacts&, const ProcessFacts&) = default;
};

ProcessFacts process_facts();

/// Waits until the process has as many of everything as before; false when that does not come. A
/// thread that was joined may still stand in the system's list for a moment.
bool back_to(const ProcessFacts& before);

/// Runs the leak checker, where this build has one; false when it found something.
bool no_leaks();

} // namespace support
