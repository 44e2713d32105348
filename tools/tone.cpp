#include "desktop/ToneDevice.h"
#include "platform/audio/beep.h"
#include "platform/audio/wave_out.h"
#include "platform/threads/clock.h"
#include "tools/verbs.h"

#include <map>

// `tarnel tone` plays a tone as a machine does.

namespace {

constexpr int exit_no_device = 2;
constexpr int exit_not_open = 4;

const std::map<std::string, WOD_PLAY_SOUND_TYPE> types = {
    {"start", WOD_PLAY_SOUND_START},
    {"continue", WOD_PLAY_SOUND_CONTINUE},
    {"replaceable", WOD_PLAY_SOUND_REPLACEABLE},
    {"auto", WOD_PLAY_SOUND_AUTO},
};

struct Tone {
    int frequency = 0;
    int milliseconds = 0;
    WOD_PLAY_SOUND_TYPE type = WOD_PLAY_SOUND_AUTO;
};

void beep(const Tone& tone) {
    if (!Beep(static_cast<DWORD>(tone.frequency), static_cast<DWORD>(tone.milliseconds))) {
        fail(exit_no_device, "There is no sound device, and no speaker that beeps at this pitch.");
    }
}

void play(const Tone& tone) {
    if (waveOutGetNumDevs() == 0) {
        beep(tone);
        return;
    }
    CWaveOutDevice device;
    if (!device.can_play_sound()) {
        fail(exit_not_open, "The sound device could not be opened.");
    }
    device.play_sound(tone.frequency, tone.milliseconds, tone.type);
    while (device.is_playing()) {
        Sleep(5);
    }
}

} // namespace

void add_tone_verb(CLI::App& tool) {
    auto tone = std::make_shared<Tone>();
    CLI::App* verb = tool.add_subcommand("tone", "Play a tone, and wait until it has been heard");
    verb->add_option("FREQUENCY", tone->frequency, "Hz, as machines ask for it")
        ->required()
        ->check(CLI::PositiveNumber);
    verb->add_option("MILLISECONDS", tone->milliseconds, "How long")
        ->required()
        ->check(CLI::PositiveNumber);
    verb->add_option("--type", tone->type, "What it would do with tones before it")
        ->transform(CLI::CheckedTransformer(types).description("{start,continue,replaceable,auto}"))
        ->type_name("TEXT")
        ->default_str("auto");
    verb->footer(
        "What sounds has half of FREQUENCY, with harmonics: so machines have always sounded. Where "
        "there is\nno sound device, the computer's own speaker beeps, at FREQUENCY.\n"
        "Example: tarnel tone 880 200 plays 440 Hz for 0.2 s\n"
        "Exit codes: 0 heard, 2 no sound device, 4 not opened");
    verb->callback([tone] { play(*tone); });
}
