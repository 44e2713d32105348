#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>

/// A point where the probe touched a part.
struct Touch {
    std::array<double, 3> position; ///< mm
    std::array<int, 3> outward;     ///< 1, 0 or -1 for each axis: where the surface looks to
};

/// A small part that is being measured, point after point and then from the start again. The same
/// seed gives the same points.
class MeasuredPart {
  public:
    /// `shape` is one of shape_names.
    MeasuredPart(const std::string& shape, std::uint32_t seed);

    Touch next();

  private:
    using Shape = Touch (*)(std::uint64_t index, std::mt19937& random);

    Shape shape_;
    std::mt19937 random_;
    std::normal_distribution<double> noise_{0.0, 0.002}; // mm, a usual machine's
    std::uint64_t index_ = 0;
};

inline constexpr std::array shape_names = {"grid", "plane", "sphere"};
