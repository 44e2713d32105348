#include "tests/desktop/tone_definition.h"
#include "tests/support/sound_card/sound_card.h"
#include "tests/support/tool.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

int run_tone(const std::string& arguments) {
    return support::run_tool("tone " + arguments).exit_code;
}

TEST(ToneVerb, playsToTheEndOrSaysWhyNot) {
    {
        support::SoundCard card;
        EXPECT_EQ(run_tone("880 70 --type replaceable"), 0);
        const auto tone = support::DefinedSound().add(880, 1102).add(880, 441).samples;
        const auto heard = card.heard();
        ASSERT_GE(heard.size(), tone.size());
        EXPECT_TRUE(std::equal(tone.begin(), tone.end(), heard.begin()));
        card.set_busy(true);
        EXPECT_EQ(run_tone("880 10"), 4);
        EXPECT_GT(run_tone("880 10 --type loud"), 4);
        EXPECT_GT(run_tone("880 0"), 4);
    }
    const support::NoSoundCard none;
    EXPECT_EQ(run_tone("36 10"), 2); // too low for a speaker, if there is one
}

} // namespace
