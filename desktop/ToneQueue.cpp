#include "desktop/ToneQueue.h"

namespace tarnel {

bool ToneQueue::accept(int frequency, int duration, WOD_PLAY_SOUND_TYPE type) {
    if (duration < 1 || frequency < 1) {
        return false;
    }
    if (type == WOD_PLAY_SOUND_AUTO) {
        type =
            requests.empty() || ends_replaceable() ? WOD_PLAY_SOUND_START : WOD_PLAY_SOUND_CONTINUE;
    }
    if (!requests.empty() && !make_room(type)) {
        return false;
    }
    requests.push_back({duration, frequency, type});
    if (type == WOD_PLAY_SOUND_START) {
        sequence_open = 1;
    }
    return true;
}

/// Whether the tone may stand behind those that are there; one of them may go for that.
bool ToneQueue::make_room(WOD_PLAY_SOUND_TYPE type) {
    switch (type) {
    case WOD_PLAY_SOUND_CONTINUE:
        return sequence_open != 0;
    case WOD_PLAY_SOUND_START:
    case WOD_PLAY_SOUND_REPLACEABLE:
        sequence_open = 0;
        if (!ends_replaceable()) {
            return false;
        }
        requests.pop_back();
        return true;
    default:
        return false;
    }
}

} // namespace tarnel
