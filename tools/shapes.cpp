#include "tools/shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

// All lengths are in millimetres. The parts lie on the machine's table, near its origin.

namespace {

constexpr double length = 80;
constexpr double width = 50;
constexpr double height = 30;

/// A plate with a round pocket, touched along a grid to and fro.
Touch touch_grid(std::uint64_t index, std::mt19937&) {
    constexpr int columns = 17;
    constexpr int rows = 11;
    constexpr double pitch = 5;
    constexpr double radius = 14;
    constexpr double depth = 6;
    constexpr std::size_t places = std::size_t{columns} * rows;
    const int place = static_cast<int>(index % places);
    const int row = place / columns;
    const int column = row % 2 == 0 ? place % columns : columns - 1 - place % columns;
    const double x = column * pitch;
    const double y = row * pitch;
    const bool in_pocket = std::hypot(x - length / 2, y - width / 2) < radius;
    return {{x, y, in_pocket ? height - depth : height}, {0, 0, 1}};
}

/// A face that is a little tilted, touched here and there.
Touch touch_plane(std::uint64_t, std::mt19937& random) {
    const double x = std::uniform_real_distribution(0.0, length)(random);
    const double y = std::uniform_real_distribution(0.0, width)(random);
    return {{x, y, height + 0.03 * x - 0.015 * y}, {0, 0, 1}};
}

/// The upper two thirds of a reference sphere, touched along a spiral from its pole.
Touch touch_sphere(std::uint64_t index, std::mt19937&) {
    constexpr double radius = 12.7;
    constexpr int touches = 200;
    const auto place = static_cast<double>(index % touches);
    const double up = 1 - place / touches * 4 / 3;
    const double around = place * std::numbers::pi * (3 - std::sqrt(5.0));
    const double out = std::sqrt(1 - up * up);
    const std::array<double, 3> way = {out * std::cos(around), out * std::sin(around), up};
    Touch touch{{length / 2, width / 2, height}, {}};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        touch.position[axis] += radius * way[axis];
        touch.outward[axis] = static_cast<int>(std::lround(way[axis]));
    }
    return touch;
}

} // namespace

MeasuredPart::MeasuredPart(const std::string& shape, std::uint32_t seed)
    : shape_(shape == "sphere"  ? touch_sphere
             : shape == "plane" ? touch_plane
                                : touch_grid),
      random_(seed) {}

Touch MeasuredPart::next() {
    Touch touch = shape_(index_++, random_);
    for (double& coordinate : touch.position) {
        coordinate += noise_(random_);
    }
    return touch;
}
