#include "desktop/ToneSynthesis.h"
#include "tests/desktop/tone_definition.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/// Whether the samples, and the phase behind them, are as the definition says.
bool is_as_defined(int frequency, double phase, std::size_t count) {
    std::vector<BYTE> made(count);
    const double next = tarnel::make_tone(made, 22050, frequency, phase);
    support::DefinedSound defined(phase);
    return made == defined.add(frequency, count).samples && next == defined.phase;
}

TEST(ToneSynthesis, givesEveryByteOfTheDefinition) {
    // Among them those whose samples fall on whole numbers again and again: a step of a whole part
    // of a turn, and no step worth mentioning.
    for (const int frequency : {1, 2, 37, 440, 441, 1000, 3675, 7350, 11025, 14700, 22050, 44100,
                                88200, 999'983, 1'000'001, 2'147'483'647}) {
        for (const double phase : {0.0, 0.5, 1.5707963267948966, 3.141592653589793, 6.28}) {
            for (const std::size_t count : {1UL, 22UL, 441UL, 1102UL}) {
                EXPECT_TRUE(is_as_defined(frequency, phase, count))
                    << frequency << " Hz at " << phase << ", " << count;
            }
        }
    }
    std::mt19937 random(20);
    std::uniform_real_distribution<double> phases(0.0, 6.283185307179586);
    for (int i = 0; i < 1000; ++i) {
        const int frequency = static_cast<int>(random() % 20'000) + 1;
        ASSERT_TRUE(is_as_defined(frequency, phases(random), 1102)) << frequency;
    }
}

} // namespace
