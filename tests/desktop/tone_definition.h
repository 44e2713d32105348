#pragma once

#include "platform/base/types.h"

#include <cmath>
#include <vector>

namespace support {

struct DefinedTone {
    std::vector<BYTE> samples;
    double phase; ///< at which the next part begins
};

/// `count` samples of a tone, written down as the definition goes.
inline DefinedTone defined_tone(int frequency, double phase, std::size_t count) {
    constexpr double two_pi = 6.283185307179586;
    DefinedTone tone{};
    const double w = frequency * two_pi / 22050 * 0.5;
    for (std::size_t i = 0; i < count; ++i) {
        const double x = static_cast<double>(i) * w;
        const double s = 127.0 + 35.0 * std::sin(phase + x) + 10.0 * std::sin(3.0 * x + phase) +
                         5.0 * std::sin(5.0 * x + phase);
        tone.samples.push_back(static_cast<BYTE>(s));
    }
    const double y = (phase + static_cast<double>(count) * w) / two_pi;
    tone.phase = (y - std::trunc(y)) * two_pi;
    return tone;
}

/// Several parts after each other, the phase carried over.
class DefinedSound {
  public:
    DefinedSound& add(int frequency, std::size_t count) {
        const DefinedTone tone = defined_tone(frequency, phase_, count);
        samples.insert(samples.end(), tone.samples.begin(), tone.samples.end());
        phase_ = tone.phase;
        return *this;
    }

    std::vector<BYTE> samples;

  private:
    double phase_ = 0.0;
};

} // namespace support
