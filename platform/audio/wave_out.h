#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// Output of sound: buffers are queued on a device and heard one after the other without a gap. A
// device has no thread. It is served by the threads that wait for its event, so somebody must wait
// for that while there is something to hear; inside these waits, and in the calls below, the
// layer changes the headers of buffers that are queued. What is heard is what the system calls its
// default sound device, converted to what that plays. The device is held only while there is
// something to hear, and about a second longer.
//
// A device that is lost while it plays keeps nobody waiting: its buffers pass in silence, at the
// pace at which they would be heard, until the device is back.

using HWAVEOUT = struct HWAVEOUT__*;
using MMRESULT = UINT;
using DWORD_PTR = std::uint64_t;

constexpr UINT WAVE_MAPPER = static_cast<UINT>(-1);
constexpr WORD WAVE_FORMAT_PCM = 1;
constexpr DWORD CALLBACK_EVENT = 0x50000;

constexpr MMRESULT MMSYSERR_NOERROR = 0;
constexpr MMRESULT MMSYSERR_ERROR = 1;
constexpr MMRESULT MMSYSERR_BADDEVICEID = 2;
constexpr MMRESULT MMSYSERR_ALLOCATED = 4;
constexpr MMRESULT MMSYSERR_INVALHANDLE = 5;
constexpr MMRESULT MMSYSERR_NOMEM = 7;
constexpr MMRESULT MMSYSERR_NOTSUPPORTED = 8;
constexpr MMRESULT MMSYSERR_INVALPARAM = 11;
constexpr MMRESULT WAVERR_BADFORMAT = 32;
constexpr MMRESULT WAVERR_STILLPLAYING = 33;
constexpr MMRESULT WAVERR_UNPREPARED = 34;

constexpr DWORD WHDR_DONE = 0x01;
constexpr DWORD WHDR_PREPARED = 0x02;
constexpr DWORD WHDR_INQUEUE = 0x10;

#pragma pack(push, 1)

struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample; ///< of 8 bits: unsigned, silence is 128
    WORD cbSize;
};

#pragma pack(pop)

/// One buffer. It stays where it is, with its data, from waveOutPrepareHeader to
/// waveOutUnprepareHeader.
struct WAVEHDR {
    LPSTR lpData;
    DWORD dwBufferLength;  ///< bytes
    DWORD dwBytesRecorded; ///< not used
    DWORD_PTR dwUser;      ///< the caller's
    DWORD dwFlags;         ///< WHDR_ flags
    DWORD dwLoops;         ///< not used: each buffer is heard once
    WAVEHDR* lpNext;       ///< not used
    DWORD_PTR reserved;    ///< not used
};

static_assert(sizeof(WAVEFORMATEX) == 18 && sizeof(WAVEHDR) == 48);

/// 1, or 0 when the system has no sound device. One that is in use elsewhere counts.
TARNEL_PLATFORM_API UINT waveOutGetNumDevs();

/// Opens the device (`id` 0 or WAVE_MAPPER) for 8-bit PCM in mono, the one format that is offered
/// (WAVERR_BADFORMAT). `callback` is the handle of an event that serves this device alone. It is
/// set now, after each buffer and at the end; several buffers may be told at once. There is no
/// other way to be told (`flags` CALLBACK_EVENT, else MMSYSERR_NOTSUPPORTED). MMSYSERR_ALLOCATED:
/// others use the device.
TARNEL_PLATFORM_API MMRESULT waveOutOpen(HWAVEOUT* device, UINT id, const WAVEFORMATEX* format,
                                         DWORD_PTR callback, DWORD_PTR instance, DWORD flags);

/// WAVERR_STILLPLAYING while buffers are queued.
TARNEL_PLATFORM_API MMRESULT waveOutClose(HWAVEOUT device);

/// A buffer can be written between these two. `size` is that of WAVEHDR.
TARNEL_PLATFORM_API MMRESULT waveOutPrepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size);
TARNEL_PLATFORM_API MMRESULT waveOutUnprepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size);

/// Queues the buffer and returns at once. When it has been heard, it is marked WHDR_DONE, no longer
/// WHDR_INQUEUE, and then the event is set; all but the last may be so some milliseconds early,
/// when the device would else run dry. WAVERR_UNPREPARED, WAVERR_STILLPLAYING while it is queued
/// already.
TARNEL_PLATFORM_API MMRESULT waveOutWrite(HWAVEOUT device, WAVEHDR* header, UINT size);

/// Stops the sound at once; all queued buffers are done.
TARNEL_PLATFORM_API MMRESULT waveOutReset(HWAVEOUT device);
