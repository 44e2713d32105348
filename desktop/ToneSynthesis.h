#pragma once

#include "platform/base/types.h"

#include <span>

namespace tarnel {

/// Fills `samples` (8 bit, unsigned) with a part of a tone that begins at `phase` (radians), at
/// `rate` samples a second; the result is the phase at which the next part begins. A tone of
/// `frequency` sounds at half of that, with its third and fifth harmonics.
double make_tone(std::span<BYTE> samples, DWORD rate, int frequency, double phase);

} // namespace tarnel
