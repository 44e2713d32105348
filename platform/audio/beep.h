#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Sounds the machine's own speaker, `frequency` 37 to 32767 Hz, and returns when it is over. FALSE
/// at once, with the last error, for other frequencies (ERROR_INVALID_PARAMETER) and when there is
/// no such speaker or no right to use it.
TARNEL_PLATFORM_API BOOL Beep(DWORD frequency, DWORD milliseconds);

namespace tarnel {

/// Whether there is such a speaker and the right to use it; else with the last error.
TARNEL_PLATFORM_API bool can_beep();

/// The same as Beep on a speaker's event device that is open.
bool beep_on(int speaker, DWORD frequency, DWORD milliseconds);

} // namespace tarnel
