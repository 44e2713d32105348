#include "desktop/ToneDevice.h"
#include "platform/audio/wave_out.h"
#include "tests/desktop/tone_definition.h"
#include "tests/support/eventually.h"
#include "tests/support/process_facts.h"
#include "tests/support/reports.h"
#include "tests/support/sound_card/sound_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <string>

namespace {

using support::DefinedSound;
using support::eventually;

constexpr int long_time = 60'000; // ms
constexpr std::size_t slice = 1102;

bool played(CWaveOutDevice& device) {
    return eventually([&] { return !device.is_playing(); });
}

bool is_silent(std::span<const BYTE> samples) {
    return std::ranges::all_of(samples, [](BYTE sample) { return sample == 128; });
}

/// Whether `sound` begins with `part`, which is cut off then.
bool take(std::span<const BYTE>& sound, const std::vector<BYTE>& part) {
    const bool begins =
        sound.size() >= part.size() && std::ranges::equal(sound.first(part.size()), part);
    sound = sound.subspan(begins ? part.size() : 0);
    return begins;
}

TEST(ToneDevice, playsEverySampleInSlicesAndCarriesThePhaseOn) {
    const support::SoundCard card;
    CWaveOutDevice device;
    ASSERT_EQ(device.can_play_sound(), 1);
    device.play_sound(1000, 120, WOD_PLAY_SOUND_START);
    ASSERT_TRUE(played(device));
    device.play_sound(0, 100, WOD_PLAY_SOUND_START);
    device.play_sound(700, 0, WOD_PLAY_SOUND_START);
    EXPECT_FALSE(device.is_playing());
    device.play_sound(700, 30, WOD_PLAY_SOUND_START);
    ASSERT_TRUE(played(device));

    DefinedSound tones;
    tones.add(1000, slice).add(1000, slice).add(1000, 441);
    const std::vector<BYTE> first = tones.samples;
    tones.add(700, 661);
    const std::vector<BYTE> second(tones.samples.begin() + 2645, tones.samples.end());
    const auto heard = card.heard();
    std::span<const BYTE> sound = heard;
    EXPECT_TRUE(take(sound, first));
    const auto at = std::ranges::search(sound, second);
    ASSERT_FALSE(at.empty());
    EXPECT_TRUE(is_silent({sound.begin(), at.begin()}));
    EXPECT_TRUE(is_silent({at.end(), sound.end()}));
}

TEST(ToneDevice, playsASequenceWithoutAGap) {
    const support::SoundCard card;
    CWaveOutDevice device;
    device.play_sound(900, 150, WOD_PLAY_SOUND_AUTO);
    device.play_sound(1100, 30, WOD_PLAY_SOUND_AUTO);
    device.play_sound(1300, 20, WOD_PLAY_SOUND_CONTINUE);
    device.play_sound(1500, 20, WOD_PLAY_SOUND_REPLACEABLE); // comes too late
    device.play_sound(1700, 20, WOD_PLAY_SOUND_CONTINUE);    // and has ended the sequence
    ASSERT_TRUE(played(device));

    DefinedSound tones;
    tones.add(900, slice).add(900, slice).add(900, slice).add(1100, 661).add(1300, 441);
    const auto heard = card.heard();
    std::span<const BYTE> sound = heard;
    EXPECT_TRUE(take(sound, tones.samples));
    EXPECT_TRUE(is_silent(sound));
}

TEST(ToneDevice, replacesAToneAfterWhatIsWithTheDevice) {
    const support::SoundCard card;
    CWaveOutDevice device;
    device.play_sound(1000, long_time, WOD_PLAY_SOUND_REPLACEABLE);
    ASSERT_TRUE(eventually([&] { return card.heard().size() > 3 * slice; }));
    device.play_sound(3000, 50, WOD_PLAY_SOUND_REPLACEABLE);
    const std::size_t before = card.heard().size();
    ASSERT_TRUE(played(device));

    const auto heard = card.heard();
    DefinedSound tones;
    std::span<const BYTE> sound;
    for (bool replaced = false; !replaced;) {
        ASSERT_LE(tones.samples.size(), before + 2 * slice) << "the old tone goes on";
        tones.add(1000, slice);
        auto both = tones;
        sound = heard;
        replaced = take(sound, both.add(3000, slice).samples);
    }
    EXPECT_TRUE(is_silent(sound));
}

TEST(ToneDevice, endsInTheMiddleOfATone) {
    const support::SoundCard card;
    { const CWaveOutDevice first; } // what is built once and for all is there now
    const auto before = support::process_facts();
    {
        CWaveOutDevice device;
        device.play_sound(1000, long_time, WOD_PLAY_SOUND_START);
        ASSERT_TRUE(eventually([&] { return !card.heard().empty(); }));
    }
    EXPECT_EQ(card.open_streams(), 0U);
    EXPECT_LT(card.heard().size(), 100 * slice);
    EXPECT_TRUE(support::back_to(before));
}

TEST(ToneDevice, holdsTheCardOnlyWhileThereIsSomethingToHear) {
    const support::SoundCard card;
    std::array<CWaveOutDevice, 100> devices;
    EXPECT_EQ(card.open_streams(), 0U);
    devices[50].play_sound(1000, 50, WOD_PLAY_SOUND_START);
    EXPECT_TRUE(eventually([&] { return card.open_streams() == 1; }));
    EXPECT_TRUE(eventually([&] { return card.open_streams() == 0; }));
    EXPECT_GE(card.heard().size(), slice);
}

TEST(ToneDevice, dropsTonesWhileOthersHoldTheCard) {
    support::SoundCard card;
    support::Reports reports;
    card.set_busy(true);
    CWaveOutDevice first;
    CWaveOutDevice second;
    EXPECT_EQ(waveOutGetNumDevs(), 1U);
    EXPECT_EQ(first.can_play_sound(), 0);
    card.set_busy(false);
    first.play_sound(1000, 100, WOD_PLAY_SOUND_START);
    EXPECT_FALSE(first.is_playing());
    ASSERT_EQ(reports.lines().size(), 1U);
    EXPECT_EQ(reports.lines()[0], std::string("Sound output fails: ") + std::strerror(EBUSY));
}

TEST(ToneDevice, outlivesACardThatIsUnplugged) {
    support::SoundCard card;
    CWaveOutDevice device;
    device.play_sound(1000, 300, WOD_PLAY_SOUND_START);
    ASSERT_TRUE(eventually([&] { return card.heard().size() > slice; }));
    support::Reports reports;
    card.set_unplugged(true);
    ASSERT_TRUE(played(device));
    const std::size_t before = card.heard().size();
    EXPECT_LT(before, 6 * slice);

    card.set_unplugged(false);
    EXPECT_TRUE(eventually([&] {
        device.play_sound(1000, 50, WOD_PLAY_SOUND_START);
        return card.heard().size() > before;
    }));
    ASSERT_TRUE(played(device));
    ASSERT_EQ(reports.lines().size(), 2U);
    EXPECT_EQ(reports.lines()[0], std::string("Sound output fails: ") + std::strerror(ENODEV));
    EXPECT_EQ(reports.lines()[1], "Sound output works again");
}

TEST(ToneDevice, waitsForNoCardThatHasStopped) {
    support::SoundCard card;
    CWaveOutDevice device;
    card.set_stuck(true);
    device.play_sound(1000, 120, WOD_PLAY_SOUND_START);
    EXPECT_TRUE(played(device));
    EXPECT_TRUE(card.heard().empty());
}

TEST(ToneDevice, beepsWhereThereIsNoCard) {
    const support::NoSoundCard none;
    CWaveOutDevice device;
    EXPECT_EQ(waveOutGetNumDevs(), 0U);
    EXPECT_EQ(device.can_play_sound(), 1);
    device.play_sound(1000, 1, WOD_PLAY_SOUND_START);
    device.play_sound(0, -1, WOD_PLAY_SOUND_START); // refused by Beep
    EXPECT_FALSE(device.is_playing());
}

} // namespace
