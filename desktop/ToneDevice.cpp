#include "desktop/ToneDevice.h"

#include "desktop/ToneQueue.h"
#include "desktop/ToneSynthesis.h"
#include "platform/audio/beep.h"
#include "platform/audio/wave_out.h"
#include "platform/base/virtual_memory.h"
#include "platform/threads/critical_section.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"
#include "platform/threads/wait.h"

#include <algorithm>

namespace {

constexpr DWORD sample_rate = 22050;       // Hz
constexpr std::int32_t longest_slice = 50; // ms
constexpr DWORD slice_bytes = sample_rate * longest_slice / 1000;
constexpr WAVEFORMATEX tone_format = {.wFormatTag = WAVE_FORMAT_PCM,
                                      .nChannels = 1,
                                      .nSamplesPerSec = sample_rate,
                                      .nAvgBytesPerSec = sample_rate,
                                      .nBlockAlign = 1,
                                      .wBitsPerSample = 8,
                                      .cbSize = 0};

class Locked {
  public:
    explicit Locked(CCriticalSection& lock) : lock_(lock) { lock_.Lock(); }

    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    ~Locked() { lock_.Unlock(); }

  private:
    CCriticalSection& lock_;
};

} // namespace

/// What a device holds. `dwUser` of a buffer is 1 while the device has it.
class CWaveOutDeviceImpl {
  public:
    CWaveOutDeviceImpl();
    CWaveOutDeviceImpl(const CWaveOutDeviceImpl&) = delete;
    CWaveOutDeviceImpl& operator=(const CWaveOutDeviceImpl&) = delete;
    ~CWaveOutDeviceImpl();

    void play(int frequency, int duration, WOD_PLAY_SOUND_TYPE type);
    bool is_playing();

    std::int32_t no_device = 0;
    HWAVEOUT wave_out = nullptr;
    WAVEFORMATEX format{};
    WAVEHDR buffers[2] = {};
    CCriticalSection lock;
    tarnel::ToneQueue queue;
    double phase = 0.0; ///< radians, where the next slice goes on
    CEvent wave_event;
    CEvent stop_event;
    HANDLE worker = nullptr;

  private:
    static DWORD work(LPVOID self);
    void feed();
    void fill(WAVEHDR& buffer);
    void write_slice(WAVEHDR& buffer, tarnel::ToneRequest& tone);
};

CWaveOutDeviceImpl::CWaveOutDeviceImpl() {
    if (waveOutGetNumDevs() == 0) {
        no_device = 1;
        return;
    }
    format = tone_format;
    const auto event = reinterpret_cast<DWORD_PTR>(wave_event.m_hObject);
    if (waveOutOpen(&wave_out, WAVE_MAPPER, &format, event, 0, CALLBACK_EVENT) !=
        MMSYSERR_NOERROR) {
        wave_out = nullptr;
        return;
    }
    for (WAVEHDR& buffer : buffers) {
        buffer.dwLoops = 1;
        buffer.dwBufferLength = slice_bytes;
        buffer.lpData = static_cast<LPSTR>(
            VirtualAlloc(nullptr, slice_bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
        waveOutPrepareHeader(wave_out, &buffer, sizeof buffer);
    }
    wave_event.ResetEvent(); // it was set by the opening
    if (std::ranges::all_of(buffers,
                            [](const WAVEHDR& buffer) { return buffer.lpData != nullptr; })) {
        worker = CreateThread(nullptr, 0, &CWaveOutDeviceImpl::work, this, 0, nullptr);
    }
}

CWaveOutDeviceImpl::~CWaveOutDeviceImpl() {
    if (worker) {
        stop_event.SetEvent();
        wave_event.SetEvent();
        WaitForSingleObject(worker, INFINITE);
    }
    if (wave_out) {
        waveOutReset(wave_out);
        for (WAVEHDR& buffer : buffers) {
            waveOutUnprepareHeader(wave_out, &buffer, sizeof buffer);
            VirtualFree(buffer.lpData, 0, MEM_RELEASE);
        }
        waveOutClose(wave_out);
    }
    if (worker) {
        CloseHandle(worker);
    }
}

void CWaveOutDeviceImpl::play(int frequency, int duration, WOD_PLAY_SOUND_TYPE type) {
    const Locked locked(lock);
    if (no_device) {
        Beep(static_cast<DWORD>(frequency), static_cast<DWORD>(duration));
    } else if (worker && queue.accept(frequency, duration, type)) {
        wave_event.SetEvent();
    }
}

bool CWaveOutDeviceImpl::is_playing() {
    const Locked locked(lock);
    return !queue.requests.empty() ||
           std::ranges::any_of(buffers, [](const WAVEHDR& buffer) { return buffer.dwUser != 0; });
}

DWORD CWaveOutDeviceImpl::work(LPVOID self) {
    auto& device = *static_cast<CWaveOutDeviceImpl*>(self);
    while (WaitForSingleObject(device.stop_event, 0) != WAIT_OBJECT_0) {
        WaitForSingleObject(device.wave_event, INFINITE);
        device.feed();
    }
    return 0;
}

void CWaveOutDeviceImpl::feed() {
    const Locked locked(lock);
    for (WAVEHDR& buffer : buffers) {
        fill(buffer);
    }
}

void CWaveOutDeviceImpl::fill(WAVEHDR& buffer) {
    if ((buffer.dwFlags & WHDR_DONE) != 0) {
        buffer.dwUser = 0;
    }
    if (buffer.dwUser != 0 || queue.requests.empty()) {
        return;
    }
    tarnel::ToneRequest& tone = queue.requests.front();
    write_slice(buffer, tone);
    if (tone.remaining == 0) {
        queue.requests.pop_front();
    }
}

/// What the device refuses is made again the next time, a little further on in phase.
void CWaveOutDeviceImpl::write_slice(WAVEHDR& buffer, tarnel::ToneRequest& tone) {
    const std::int32_t slice = std::min(tone.remaining, longest_slice);
    buffer.dwBufferLength = format.nSamplesPerSec * static_cast<DWORD>(slice) / 1000;
    const std::span samples(reinterpret_cast<BYTE*>(buffer.lpData), buffer.dwBufferLength);
    phase = tarnel::make_tone(samples, format.nSamplesPerSec, tone.frequency, phase);
    if (waveOutWrite(wave_out, &buffer, sizeof buffer) == MMSYSERR_NOERROR) {
        buffer.dwUser = 1;
        tone.remaining -= slice;
    }
}

CWaveOutDevice::CWaveOutDevice() : m_pImpl(std::make_unique<CWaveOutDeviceImpl>()) {}

CWaveOutDevice::~CWaveOutDevice() = default;

int CWaveOutDevice::can_play_sound() {
    const Locked locked(m_pImpl->lock);
    return m_pImpl->no_device || m_pImpl->wave_out ? 1 : 0;
}

void CWaveOutDevice::play_sound(int frequency, int duration, WOD_PLAY_SOUND_TYPE type) {
    m_pImpl->play(frequency, duration, type);
}

int CWaveOutDevice::is_playing() {
    return m_pImpl->is_playing() ? 1 : 0;
}
