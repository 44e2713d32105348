#include "platform/audio/beep.h"
#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/threads/clock.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>

namespace {

constexpr DWORD lowest = 37; // Hz
constexpr DWORD highest = 32767;

tarnel::Descriptor open_device(const std::filesystem::path& path) {
    return tarnel::Descriptor(
        tarnel::retry_on_signal([&] { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC); }));
}

bool makes_tones(const tarnel::Descriptor& device) {
    unsigned long sounds = 0;
    return ::ioctl(device.get(), EVIOCGBIT(EV_SND, sizeof sounds), &sounds) >= 0 &&
           (sounds >> SND_TONE & 1) != 0;
}

/// The usual place first; not every system keeps links by path. None, with errno, if nothing makes
/// tones.
tarnel::Descriptor open_speaker() {
    auto speaker = open_device("/dev/input/by-path/platform-pcspkr-event-spkr");
    const int error = errno;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/input", ignored)) {
        if (!speaker && entry.path().filename().string().starts_with("event")) {
            auto device = open_device(entry.path());
            speaker = device && makes_tones(device) ? std::move(device) : tarnel::Descriptor();
        }
    }
    errno = error;
    return speaker;
}

/// 0 ends the tone.
bool set_tone(int speaker, DWORD frequency) {
    input_event event{};
    event.type = EV_SND;
    event.code = SND_TONE;
    event.value = static_cast<int>(frequency);
    return tarnel::retry_on_signal([&] { return ::write(speaker, &event, sizeof event); }) ==
           sizeof event;
}

} // namespace

bool tarnel::can_beep() {
    const auto speaker = open_speaker();
    if (!speaker) {
        SetLastError(error_from_errno(errno));
    }
    return static_cast<bool>(speaker);
}

bool tarnel::beep_on(int speaker, DWORD frequency, DWORD milliseconds) {
    if (!set_tone(speaker, frequency)) {
        return false;
    }
    Sleep(milliseconds);
    return set_tone(speaker, 0);
}

BOOL Beep(DWORD frequency, DWORD milliseconds) {
    if (frequency < lowest || frequency > highest) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto speaker = open_speaker();
    if (!speaker || !tarnel::beep_on(speaker.get(), frequency, milliseconds)) {
        SetLastError(tarnel::error_from_errno(errno));
        return FALSE;
    }
    return TRUE;
}
