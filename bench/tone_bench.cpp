// What making tones costs against the definition written down: three sines a sample.

#include "bench/report.h"
#include "desktop/ToneSynthesis.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr double two_pi = 6.283185307179586;
constexpr DWORD rate = 22050;

using Slice = std::array<BYTE, 1102>;

double make_by_definition(Slice& samples, int frequency, double phase) {
    const double w = frequency * two_pi / rate * 0.5;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double x = static_cast<double>(i) * w;
        samples[i] =
            static_cast<BYTE>(127.0 + 35.0 * std::sin(phase + x) +
                              10.0 * std::sin(3.0 * x + phase) + 5.0 * std::sin(5.0 * x + phase));
    }
    const double y = (phase + static_cast<double>(samples.size()) * w) / two_pi;
    return (y - static_cast<int>(y)) * two_pi;
}

/// Samples a second; `sum` collects them, so that they are made and can be compared.
template <typename Make>
double throughput(Make make, unsigned& sum) {
    constexpr int slices = 100;
    sum = 0;
    const double time = bench::seconds([&] {
        Slice samples;
        double phase = 0.0;
        for (int slice = 0; slice < slices; ++slice) {
            phase = make(samples, 300 + 17 * slice, phase);
            for (const BYTE sample : samples) {
                sum = sum * 31 + sample;
            }
        }
    });
    return slices * static_cast<double>(Slice().size()) / time;
}

} // namespace

int main() {
    unsigned ours = 0;
    unsigned theirs = 0;
    const auto tarnel = [](Slice& samples, int frequency, double phase) {
        return tarnel::make_tone(samples, rate, frequency, phase);
    };
    const auto comparison = bench::compare([&] { return throughput(tarnel, ours); },
                                           [&] { return throughput(make_by_definition, theirs); });
    if (ours != theirs) {
        std::fputs("the two make different tones\n", stderr);
        return EXIT_FAILURE;
    }
    bench::report("h.tone", comparison, "samples/s");
}
