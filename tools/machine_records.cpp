#include "tools/machine_records.h"

#include <fmt/format.h>

#include <cmath>

namespace {

std::size_t up_to(std::size_t last, std::mt19937& random) {
    return std::uniform_int_distribution<std::size_t>(0, last)(random);
}

/// Three coordinates, each with its axis letter and a blank after it, then for each axis where the
/// second point lies, one millimetre off: '-' upwards, '+' downwards.
MachineRecord write_metrolec(const std::array<long, 3>& counts, const Touch& touch) {
    MachineRecord record{fmt::format("X{} Y{} Z{} ", counts[0], counts[1], counts[2]), {}};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const int way = touch.outward[axis];
        record.text += way > 0 ? '-' : way < 0 ? '+' : '0';
        record.values[axis] = static_cast<double>(counts[axis]) / 1000;
        record.values[axis + 3] = record.values[axis] + way;
    }
    return record;
}

/// Six numbers with their signs.
MachineRecord write_perceval(const std::array<long, 3>& counts, const Touch& touch,
                             double counts_per_mm) {
    MachineRecord record{};
    for (std::size_t i = 0; i < 6; ++i) {
        const long way = i < 3 ? 0 : touch.outward[i - 3] * std::lround(counts_per_mm);
        const long count = counts[i % 3] + way;
        record.text += fmt::format("{}{:+08}", i == 0 ? "" : " ", count);
        record.values[i] = static_cast<double>(count) / counts_per_mm;
    }
    return record;
}

/// The blanks that end the coordinates; without one of them the record has too few.
std::size_t blank(const std::string& text, std::size_t which) {
    std::size_t place = text.find(' ');
    for (; which > 0; --which) {
        place = text.find(' ', place + 1);
    }
    return place;
}

} // namespace

MachineRecord MachineKind::record(const Touch& touch, std::string_view line_end) const {
    std::array<long, 3> counts{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        counts[axis] = std::lround(touch.position[axis] * counts_per_mm);
    }
    MachineRecord record =
        by_lines ? write_metrolec(counts, touch) : write_perceval(counts, touch, counts_per_mm);
    record.text += line_end;
    return record;
}

Outcome MachineKind::whole(std::string_view line_end) const {
    // The sixth number takes the character after it, and the record then needs a line end.
    return by_lines || line_end.size() > 1 ? Outcome::point : Outcome::point_with_next;
}

void MachineKind::flip(std::string& text, std::mt19937& random) const {
    const std::size_t place = by_lines ? blank(text, up_to(2, random)) : text.size() - 1;
    const std::size_t bit = up_to(6, random);
    text[place] = static_cast<char>(text[place] ^ (1 << bit));
}

void MachineKind::cut(std::string& text, std::mt19937& random) const {
    if (by_lines) {
        const std::size_t left = up_to(blank(text, 2), random);
        text.erase(left, text.find('\r') - left);
    } else {
        text.pop_back();
    }
}

std::span<const MachineKind> machine_kinds() {
    static constexpr MachineKind kinds[] = {
        {"METROLEC", 1000, 1, false, true},
        {"PERCEVAL 1/100", 100, 0, true, false},
        {"PERCEVAL MICRON", 1000, 0, true, false},
    };
    return kinds;
}

std::string noise_burst(std::mt19937& random) {
    constexpr std::string_view noise = "~?#@ {}[]ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopq";
    constexpr std::size_t longest = 5000;
    std::string burst(1 + up_to(longest - 1, random), ' ');
    for (char& c : burst) {
        c = noise[up_to(noise.size() - 1, random)];
    }
    return burst + '\r';
}
