#pragma once

#include "tools/shapes.h"

#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>

/// A record as a machine sends it, and the point that a protocol has to make of it.
struct MachineRecord {
    std::string text;
    std::array<double, 6> values; ///< x, y, z, x2, y2, z2 in mm
};

/// What comes of a record.
enum class Outcome {
    point,           ///< its point, with its own line end
    nothing,         ///< no point, and the next record is not touched
    point_with_next, ///< its point, at the end of the next record, which is swallowed
};

/// How a kind of machine writes its records, and what its rules say of damaged ones.
struct MachineKind {
    const char* protocol; ///< its name in the list of protocols
    double counts_per_mm;
    int first_number; ///< of its points
    bool crlf;        ///< its usual line end; else a carriage return alone
    bool by_lines;    ///< a line end always ends a record; else six numbers make one

    MachineRecord record(const Touch& touch, std::string_view line_end) const;

    /// What comes of a record that is not damaged.
    Outcome whole(std::string_view line_end) const;

    /// What comes of one after `flip` or `cut`.
    Outcome damaged() const { return by_lines ? Outcome::nothing : Outcome::point_with_next; }

    /// Turns one bit of the record over, where that can give no wrong point.
    void flip(std::string& text, std::mt19937& random) const;

    /// Takes the end of the record away, as far as that can give no wrong point.
    void cut(std::string& text, std::mt19937& random) const;
};

std::span<const MachineKind> machine_kinds();

/// Noise on the line that no machine takes for a number, and a carriage return.
std::string noise_burst(std::mt19937& random);
