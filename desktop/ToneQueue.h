#pragma once

#include "desktop/ToneDevice.h"

#include <cstdint>
#include <deque>

namespace tarnel {

struct ToneRequest {
    std::int32_t remaining; ///< milliseconds that have not gone to the device
    std::int32_t frequency; ///< Hz
    std::int32_t type;      ///< never WOD_PLAY_SOUND_AUTO
};

/// The tones that are waiting; the front one is being played.
struct ToneQueue {
    /// Whether the tone joins the queue, perhaps in place of the last one there.
    bool accept(int frequency, int duration, WOD_PLAY_SOUND_TYPE type);

    std::deque<ToneRequest> requests;
    std::int32_t sequence_open = 0; ///< nonzero while a tone may continue what has been begun

  private:
    bool ends_replaceable() const {
        return !requests.empty() && requests.back().type == WOD_PLAY_SOUND_REPLACEABLE;
    }

    bool make_room(WOD_PLAY_SOUND_TYPE type);
};

} // namespace tarnel
