#pragma once

#include "tests/protocols/receiver.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

/// Stops the program unless `Machine` makes the points of `model` of a text that comes in blocks.
/// The first byte of the input says how long they are; a text is no longer than the ring.
template <typename Machine, typename Model>
void check_blocks(const std::uint8_t* data, std::size_t size, Model model) {
    if (size == 0 || size > 1000) {
        return;
    }
    std::size_t length = 1 + data[0];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto points = points_of<Machine>(text, [&] {
        length = length * 5 % 257; // one of 1 to 256, another each time
        return length;
    });
    const bool finite = std::all_of(points.begin(), points.end(), [](const __PointMMT& p) {
        return std::isfinite(p.x + p.y + p.z + p.x2 + p.y2 + p.z2);
    });
    if (!finite || !same(points, model(text))) {
        std::abort();
    }
}
