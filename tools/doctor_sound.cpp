#include "desktop/ToneDevice.h"
#include "platform/audio/beep.h"
#include "platform/audio/wave_out.h"
#include "platform/base/last_error.h"
#include "tools/doctor.h"

#include <unistd.h>

#include <filesystem>

namespace {

constexpr const char* service = "tones";

/// The first file of a sound device which this user has no right to use; "" when there is none.
std::string forbidden_device() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/snd", error)) {
        const bool plays = entry.path().filename().string().starts_with("pcm") &&
                           entry.path().string().ends_with('p');
        if (plays && ::access(entry.path().c_str(), R_OK | W_OK) != 0) {
            return entry.path();
        }
    }
    return {};
}

/// What is left without a sound device: the computer's own speaker.
void examine_speaker(Diagnosis& diagnosis) {
    if (tarnel::can_beep()) {
        diagnosis.add(Level::ok, "Tones fall back to the computer's speaker.");
        diagnosis.works(service, "by the computer's speaker");
        return;
    }
    diagnosis.fails(service, "there is neither a sound device nor a speaker");
    if (GetLastError() == ERROR_ACCESS_DENIED) {
        diagnosis.add(Level::warning,
                      "Tones would fall back to the computer's speaker, which you may not use.",
                      "sudo setfacl -m u:" + user_name() +
                          ":rw /dev/input/by-path/platform-pcspkr-event-spkr");
    } else {
        diagnosis.add(Level::warning, "Nor has the computer a speaker, to which tones fall back.",
                      "sudo modprobe pcspkr, where there is one");
    }
}

} // namespace

Diagnosis examine_sound() {
    Diagnosis diagnosis;
    if (waveOutGetNumDevs() > 0) {
        if (CWaveOutDevice().can_play_sound()) {
            diagnosis.add(Level::ok, "The sound device can be opened.");
            diagnosis.works(service);
        } else {
            diagnosis.add(Level::problem,
                          "The sound device cannot be opened: another program uses it, or it does "
                          "not play at the rate of tones.",
                          "fuser -v /dev/snd/* shows who has it open");
            diagnosis.fails(service, "the sound device cannot be opened");
        }
        return diagnosis;
    }
    if (const std::string device = forbidden_device(); !device.empty()) {
        diagnosis.add(Level::problem, "You (" + user_name() + ") may not use " + device + ".",
                      cure_of_rights(device));
    } else {
        diagnosis.add(Level::warning, "There is no sound device.",
                      "Plug one in; aplay -L shows what the system knows");
    }
    examine_speaker(diagnosis);
    return diagnosis;
}
