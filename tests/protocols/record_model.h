#pragma once

#include "protocols/Point.h"

#include <string>
#include <vector>

// What the parsers must find in a text, worked out from the text as a whole.

/// Coordinates in millimetres. A record that a 0xFF comes before, or stands in, is none.
std::vector<__PointMMT> metrolec_points(std::string text);

/// Coordinates as they are sent.
std::vector<__PointMMT> perceval_points(std::string text);
