#include "platform/audio/beep.h"
#include "platform/audio/wave_out.h"
#include "platform/base/last_error.h"
#include "platform/base/virtual_memory.h"
#include "platform/threads/event.h"
#include "platform/threads/wait.h"
#include "tests/support/sound_card/sound_card.h"

#include <gtest/gtest.h>
#include <linux/input.h>
#include <unistd.h>

#include <string>

namespace {

constexpr WAVEFORMATEX format = {WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};

class WaveOut : public testing::Test {
  protected:
    MMRESULT open(const WAVEFORMATEX& wanted, UINT id = WAVE_MAPPER, DWORD flags = CALLBACK_EVENT) {
        return waveOutOpen(&device_, id, &wanted,
                           reinterpret_cast<DWORD_PTR>(static_cast<HANDLE>(event_)), 0, flags);
    }

    /// A tenth of a second.
    WAVEHDR buffer(char level) {
        samples_ = std::string(800, level);
        return {samples_.data(), 800, 0, 0, 0, 1, nullptr, 0};
    }

    support::SoundCard card_{8000};
    CEvent event_;
    HWAVEOUT device_ = nullptr;
    std::string samples_;
};

TEST_F(WaveOut, opensForWhatItOffers) {
    WAVEFORMATEX stereo = format;
    stereo.nChannels = 2;
    EXPECT_EQ(open(stereo), WAVERR_BADFORMAT);
    EXPECT_EQ(open(format, 1), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(open(format, 0, 0x30000), MMSYSERR_NOTSUPPORTED);
    EXPECT_EQ(waveOutOpen(&device_, 0, &format, 0, 0, CALLBACK_EVENT), MMSYSERR_INVALPARAM);
    card_.set_busy(true);
    EXPECT_EQ(open(format), MMSYSERR_ALLOCATED);
    card_.set_busy(false);
    EXPECT_EQ(WaitForSingleObject(event_, 0), WAIT_TIMEOUT);

    const std::size_t handles = tarnel::open_handle_count();
    ASSERT_EQ(open(format), MMSYSERR_NOERROR);
    EXPECT_EQ(WaitForSingleObject(event_, 0), WAIT_OBJECT_0);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(WaitForSingleObject(event_, 0), WAIT_OBJECT_0);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(tarnel::open_handle_count(), handles);
}

TEST_F(WaveOut, keepsAccountOfItsBuffers) {
    ASSERT_EQ(open(format), MMSYSERR_NOERROR);
    event_.ResetEvent();
    WAVEHDR played = buffer(90);
    EXPECT_EQ(waveOutWrite(device_, &played, sizeof played), WAVERR_UNPREPARED);
    EXPECT_EQ(waveOutPrepareHeader(device_, &played, sizeof played), MMSYSERR_NOERROR);
    EXPECT_EQ(played.dwFlags, WHDR_PREPARED);
    EXPECT_EQ(waveOutWrite(device_, &played, sizeof played), MMSYSERR_NOERROR);
    EXPECT_EQ(played.dwFlags, WHDR_PREPARED | WHDR_INQUEUE);
    EXPECT_EQ(waveOutWrite(device_, &played, sizeof played), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutUnprepareHeader(device_, &played, sizeof played), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutClose(device_), WAVERR_STILLPLAYING);

    ASSERT_EQ(WaitForSingleObject(event_, 60'000), WAIT_OBJECT_0);
    EXPECT_EQ(played.dwFlags, WHDR_PREPARED | WHDR_DONE);

    // A reset ends what is queued, also a long buffer in the middle of it.
    std::string minute(60 * 8000, 'm');
    WAVEHDR endless = {minute.data(), 60 * 8000, 0, 0, WHDR_PREPARED, 1, nullptr, 0};
    EXPECT_EQ(waveOutWrite(device_, &endless, sizeof endless), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(device_, &played, sizeof played), MMSYSERR_NOERROR);
    while (card_.heard().size() < 2000) {
        EXPECT_EQ(WaitForSingleObject(event_, 5), WAIT_TIMEOUT);
    }
    EXPECT_EQ(waveOutReset(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(card_.open_streams(), 0U);
    EXPECT_EQ(played.dwFlags, WHDR_PREPARED | WHDR_DONE);
    EXPECT_EQ(endless.dwFlags, WHDR_PREPARED | WHDR_DONE);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_NOERROR);
}

TEST(Beep, soundsTheSpeakerForAWhile) {
    for (const DWORD frequency : {0U, 36U, 32768U, static_cast<DWORD>(-1)}) {
        EXPECT_FALSE(Beep(frequency, 1));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_TRUE(tarnel::beep_on(ends[1], 440, 1));
    input_event events[2] = {};
    EXPECT_EQ(::read(ends[0], events, sizeof events), ssize_t{sizeof events});
    EXPECT_EQ(events[0].code, SND_TONE);
    EXPECT_EQ(events[0].value, 440);
    EXPECT_EQ(events[1].value, 0);

    if (::access("/dev/input", F_OK) != 0) {
        EXPECT_FALSE(Beep(440, 600'000));
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    }
}

TEST(VirtualMemory, isGivenBackOnce) {
    constexpr DWORD all = MEM_COMMIT | MEM_RESERVE;
    EXPECT_EQ(VirtualAlloc(nullptr, 1102, MEM_RESERVE, PAGE_READWRITE), nullptr);
    auto* const block = static_cast<char*>(VirtualAlloc(nullptr, 1102, all, PAGE_READWRITE));
    ASSERT_NE(block, nullptr);
    EXPECT_FALSE(VirtualFree(block, 1102, MEM_RELEASE));
    EXPECT_TRUE(VirtualFree(block, 0, MEM_RELEASE));
    EXPECT_FALSE(VirtualFree(block, 0, MEM_RELEASE));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

} // namespace
