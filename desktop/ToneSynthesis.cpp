#include "desktop/ToneSynthesis.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarnel {
namespace {

constexpr double two_pi = 6.283185307179586;

/// What a sample is by definition: cut off, not rounded.
double sample_at(double x, double phase) {
    return 127.0 + 35.0 * std::sin(phase + x) + 10.0 * std::sin(3.0 * x + phase) +
           5.0 * std::sin(5.0 * x + phase);
}

// Three sines a sample are slow. With the cosine c and the sine s of x, the sum of the three is
//     sin(phase) * (35 cos x + 10 cos 3x + 5 cos 5x) + cos(phase) * (35 sin x + ...)
//   = sin(phase) * c (30 - 60 c^2 + 80 c^4) + cos(phase) * s (90 - 140 s^2 + 80 s^4),
// and c and s follow from those of the block's first sample by one rotation. That is a little off,
// by far less than `doubt` as long as x is not huge; a sample so close to a whole number that it
// could be cut off wrongly is computed by definition.
constexpr std::size_t block = 8;
constexpr double doubt = 1e-7;
constexpr int highest_fast = 1'000'000; // Hz

struct Rotation {
    double c;
    double s;
};

Rotation rotation_by(double angle) {
    return {std::cos(angle), std::sin(angle)};
}

Rotation operator*(const Rotation& a, const Rotation& b) {
    return {a.c * b.c - a.s * b.s, a.s * b.c + a.c * b.s};
}

class FastTone {
  public:
    FastTone(double step, double phase) : phase_(rotation_by(phase)) {
        for (std::size_t i = 0; i < block; ++i) {
            offsets_[i] = rotation_by(static_cast<double>(i) * step);
        }
        to_next_ = rotation_by(block * step);
    }

    /// The next samples; false when one of them is in doubt.
    bool next(std::array<BYTE, block>& samples) {
        bool sure = true;
        for (std::size_t i = 0; i < block; ++i) {
            const double value = value_of(first_ * offsets_[i]);
            const int whole = static_cast<int>(value);
            const double rest = value - whole;
            sure &= (rest > doubt) & (rest < 1.0 - doubt);
            samples[i] = static_cast<BYTE>(whole);
        }
        first_ = first_ * to_next_;
        return sure;
    }

  private:
    double value_of(const Rotation& x) const {
        const double cc = x.c * x.c;
        const double ss = x.s * x.s;
        return 127.0 + phase_.s * x.c * (30.0 + cc * (80.0 * cc - 60.0)) +
               phase_.c * x.s * (90.0 + ss * (80.0 * ss - 140.0));
    }

    const Rotation phase_;
    std::array<Rotation, block> offsets_{};
    Rotation to_next_{};
    Rotation first_{1.0, 0.0};
};

} // namespace

double make_tone(std::span<BYTE> samples, DWORD rate, int frequency, double phase) {
    const double step = frequency * two_pi / rate * 0.5;
    FastTone tone(step, phase);
    for (std::size_t done = 0; done < samples.size(); done += block) {
        std::array<BYTE, block> next{};
        if (!tone.next(next) || frequency > highest_fast) {
            for (std::size_t i = 0; i < block; ++i) {
                const double x = static_cast<double>(done + i) * step;
                next[i] = static_cast<BYTE>(sample_at(x, phase));
            }
        }
        std::copy_n(next.begin(), std::min(block, samples.size() - done), &samples[done]);
    }
    const double turns = (phase + static_cast<double>(samples.size()) * step) / two_pi;
    return (turns - static_cast<int>(turns)) * two_pi;
}

} // namespace tarnel
