#pragma once

#include "core/export.h"

#include <memory>

class CWaveOutDeviceImpl;

/// What a tone does with those that are waiting.
enum WOD_PLAY_SOUND_TYPE : int {
    /// Begins a sequence. While tones are waiting it is dropped, unless the last of them is
    /// replaceable: that one it replaces.
    WOD_PLAY_SOUND_START = 0,
    /// Goes on with a sequence; without one it is dropped while tones are waiting.
    WOD_PLAY_SOUND_CONTINUE = 1,
    /// A single tone. Joins as a beginning does, and the next of either kind replaces it.
    WOD_PLAY_SOUND_REPLACEABLE = 2,
    /// Begins a sequence when nothing is waiting or the last tone is replaceable, else goes on.
    WOD_PLAY_SOUND_AUTO = 3,
};

/// Plays short tones on the system's sound device, without keeping its caller waiting: a thread of
/// its own makes them, at most 50 ms at a time and two such parts ahead, so that a tone is replaced
/// within about 100 ms. Where there is no sound device, each tone is a Beep, and its caller waits
/// for the end of it.
///
/// All functions may be called on any thread. The destructor ends the sound, and runs when nobody
/// is inside a function any more.
class TARNEL_API CWaveOutDevice {
  public:
    CWaveOutDevice();
    ~CWaveOutDevice();
    CWaveOutDevice(const CWaveOutDevice&) = delete;
    CWaveOutDevice& operator=(const CWaveOutDevice&) = delete;

    /// 0 when there is a sound device that could not be opened: then no tone is ever heard. 1
    /// otherwise, also where tones are beeps.
    int can_play_sound();

    /// Plays `frequency` (Hz) for `duration` (ms); a tone of less than 1 Hz or 1 ms is none. What
    /// sounds has half the frequency, with harmonics: machines have always sounded like that.
    void play_sound(int frequency, int duration, WOD_PLAY_SOUND_TYPE type);

    /// 1 until the last tone has been heard.
    int is_playing();

  private:
    std::unique_ptr<CWaveOutDeviceImpl> m_pImpl;
};

static_assert(sizeof(CWaveOutDevice) == sizeof(void*));
