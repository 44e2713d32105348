#include "platform/audio/wave_out.h"

#include "platform/audio/sound_stream.h"
#include "platform/audio/wave_output.h"
#include "platform/threads/handle_table.h"
#include "platform/threads/wait.h"

#include <cerrno>

namespace {

std::shared_ptr<tarnel::WaveOutput> find_output(HWAVEOUT device) {
    return tarnel::find_handle_as<tarnel::WaveOutput>(device);
}

bool is_offered(const WAVEFORMATEX& format) {
    return format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels == 1 &&
           format.wBitsPerSample == 8 && format.nBlockAlign == 1 && format.nSamplesPerSec > 0 &&
           format.nAvgBytesPerSec == format.nSamplesPerSec;
}

MMRESULT result_from_errno(int error) {
    switch (error) {
    case EBUSY:
        return MMSYSERR_ALLOCATED;
    case EINVAL:
        return WAVERR_BADFORMAT;
    case ENOENT:
    case ENODEV:
        return MMSYSERR_BADDEVICEID;
    case ENOMEM:
        return MMSYSERR_NOMEM;
    default:
        return MMSYSERR_ERROR;
    }
}

/// What is wrong with the arguments of a call on a buffer.
MMRESULT check(const std::shared_ptr<tarnel::WaveOutput>& output, const WAVEHDR* header,
               UINT size) {
    if (!output) {
        return MMSYSERR_INVALHANDLE;
    }
    return header && header->lpData && size >= sizeof(WAVEHDR) ? MMSYSERR_NOERROR
                                                               : MMSYSERR_INVALPARAM;
}

} // namespace

UINT waveOutGetNumDevs() {
    return tarnel::sound_device_exists() ? 1 : 0;
}

MMRESULT waveOutOpen(HWAVEOUT* device, UINT id, const WAVEFORMATEX* format, DWORD_PTR callback,
                     DWORD_PTR /*instance*/, DWORD flags) {
    if (id != WAVE_MAPPER && id != 0) {
        return MMSYSERR_BADDEVICEID;
    }
    if (flags != CALLBACK_EVENT) {
        return MMSYSERR_NOTSUPPORTED;
    }
    auto event = tarnel::find_handle_as<tarnel::Event>(reinterpret_cast<HANDLE>(callback));
    if (!device || !format || !event) {
        return MMSYSERR_INVALPARAM;
    }
    if (!is_offered(*format)) {
        return WAVERR_BADFORMAT;
    }
    // Whether it can be opened is told now; it is held from the first buffer on.
    int error = 0;
    if (!tarnel::open_sound_stream(format->nSamplesPerSec, error)) {
        return result_from_errno(error);
    }
    event->set();
    *device = static_cast<HWAVEOUT>(tarnel::add_handle(
        std::make_shared<tarnel::WaveOutput>(format->nSamplesPerSec, std::move(event))));
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT device) {
    const auto output = find_output(device);
    if (!output) {
        return MMSYSERR_INVALHANDLE;
    }
    if (output->is_queued()) {
        return WAVERR_STILLPLAYING;
    }
    CloseHandle(device);
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size) {
    const MMRESULT result = check(find_output(device), header, size);
    if (result == MMSYSERR_NOERROR) {
        header->dwFlags |= WHDR_PREPARED;
    }
    return result;
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size) {
    const auto output = find_output(device);
    const MMRESULT result = check(output, header, size);
    return result == MMSYSERR_NOERROR ? output->unprepare(*header) : result;
}

MMRESULT waveOutWrite(HWAVEOUT device, WAVEHDR* header, UINT size) {
    const auto output = find_output(device);
    const MMRESULT result = check(output, header, size);
    return result == MMSYSERR_NOERROR ? output->write(*header) : result;
}

MMRESULT waveOutReset(HWAVEOUT device) {
    const auto output = find_output(device);
    if (!output) {
        return MMSYSERR_INVALHANDLE;
    }
    output->reset();
    return MMSYSERR_NOERROR;
}
