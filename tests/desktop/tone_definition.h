#pragma once

#include "platform/base/types.h"

#include <cmath>
#include <vector>

namespace support {

/// Tones after each other, written down as the definition goes, the phase carried over.
class DefinedSound {
  public:
    explicit DefinedSound(double first_phase = 0.0) : phase(first_phase) {}

    DefinedSound& add(int frequency, std::size_t count) {
        constexpr double two_pi = 6.283185307179586;
        const double w = frequency * two_pi / 22050 * 0.5;
        for (std::size_t i = 0; i < count; ++i) {
            const double x = static_cast<double>(i) * w;
            const double s = 127.0 + 35.0 * std::sin(phase + x) + 10.0 * std::sin(3.0 * x + phase) +
                             5.0 * std::sin(5.0 * x + phase);
            samples.push_back(static_cast<BYTE>(s));
        }
        const double y = (phase + static_cast<double>(count) * w) / two_pi;
        phase = (y - std::trunc(y)) * two_pi;
        return *this;
    }

    std::vector<BYTE> samples;
    double phase; ///< at which the next one begins
};

} // namespace support
