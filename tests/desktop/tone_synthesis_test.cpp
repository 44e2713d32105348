#include "desktop/ToneSynthesis.h"
#include "tests/desktop/tone_definition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

/// The first sample that is not as the definition says; -1 when all are.
int first_difference(int frequency, double phase, std::size_t count) {
    std::vector<BYTE> made(count);
    tarnel::make_tone(made, 22050, frequency, phase);
    const auto defined = support::defined_tone(frequency, phase, count);
    const auto at = std::ranges::mismatch(made, defined.samples).in1;
    return at == made.end() ? -1 : static_cast<int>(at - made.begin());
}

TEST(ToneSynthesis, givesEveryByteOfTheDefinition) {
    // Among them those whose samples fall on whole numbers again and again: a step of a whole part
    // of a turn, and no step worth mentioning.
    for (const int frequency : {1, 2, 37, 440, 441, 1000, 3675, 7350, 11025, 14700, 22050, 44100,
                                88200, 999'983, 1'000'001, 2'147'483'647}) {
        for (const double phase : {0.0, 0.5, 1.5707963267948966, 3.141592653589793, 6.28}) {
            for (const std::size_t count : {1UL, 22UL, 441UL, 1102UL}) {
                EXPECT_EQ(first_difference(frequency, phase, count), -1)
                    << frequency << " Hz at " << phase << ", " << count;
            }
        }
    }
    std::mt19937 random(20);
    std::uniform_real_distribution<double> phases(0.0, 6.283185307179586);
    for (int i = 0; i < 1000; ++i) {
        const int frequency = static_cast<int>(random() % 20'000) + 1;
        ASSERT_EQ(first_difference(frequency, phases(random), 1102), -1) << frequency;
    }
}

TEST(ToneSynthesis, handsThePhaseOn) {
    std::vector<BYTE> samples(1102);
    double phase = 0.0;
    for (int slice = 0; slice < 100; ++slice) {
        const auto defined = support::defined_tone(1234, phase, samples.size());
        phase = tarnel::make_tone(samples, 22050, 1234, phase);
        ASSERT_EQ(phase, defined.phase) << slice;
    }
}

} // namespace
