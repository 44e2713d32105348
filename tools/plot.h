#pragma once

#include "protocols/Point.h"

#include <span>
#include <string>

/// A picture of `points` as SVG text: seen from above (x to the right, y up) and from the side (x
/// to the right, z up), all axes in one scale, in light or dark colours as the viewer has them.
std::string plot_svg(const std::string& protocol, std::span<const __PointMMT> points);
