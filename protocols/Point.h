#pragma once

#include "platform/base/types.h"

#include <cmath>

/// A point as all protocols deliver it: coordinates in millimetres.
struct __PointMMT {
    double x = 0.0; ///< the measured point
    double y = 0.0;
    double z = 0.0;
    double x2 = 0.0; ///< a second point that came with it
    double y2 = 0.0;
    double z2 = 0.0;
    std::int32_t number = -1; ///< the protocol's running number; -1: no point

    __PointMMT() = default;

    __PointMMT(int running_number, double x_, double y_, double z_, double x2_, double y2_,
               double z2_)
        : x(x_), y(y_), z(z_), x2(x2_), y2(y2_), z2(z2_), number(running_number) {}

    /// Nonzero when the numbers are equal and each coordinate differs by less than 0.01.
    int operator==(const __PointMMT& other) const {
        constexpr double tolerance = 0.01;
        const auto near = [](double a, double b) { return std::abs(a - b) < tolerance; };
        return number == other.number && near(x, other.x) && near(y, other.y) && near(z, other.z) &&
               near(x2, other.x2) && near(y2, other.y2) && near(z2, other.z2);
    }

    int operator!=(const __PointMMT& other) const { return !(*this == other); }

    /// Multiplies the coordinates by `factor`.
    void Scale(double factor) {
        x *= factor;
        y *= factor;
        z *= factor;
        x2 *= factor;
        y2 *= factor;
        z2 *= factor;
    }
};
