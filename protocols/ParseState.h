#pragma once

#include <cstdint>

namespace tarnel {

/// What a parser that takes a record piece by piece keeps between the pieces.
struct ParseState {
    int state = 0; ///< the parser's own
    double values[12]{};
    int value_index = 0; ///< how many values of the record are there
    int point_counter = 0;
    char line[200]{}; ///< the field that is being collected, always with its zero
    int line_length = 0;
    std::uint64_t damaged_records = 0; ///< that have been dropped

    void clear_line() {
        *line = '\0';
        line_length = 0;
    }
};

/// No further complete point is there now.
constexpr int NO_POINT = -1;

} // namespace tarnel
