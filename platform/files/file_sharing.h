#pragma once

#include "platform/base/export.h"

namespace tarnel {

/// Enters an open descriptor as a file's, until leave_sharing(). False when the way it was opened
/// does not agree with others: who writes (`writes`) is refused while a file of this process denies
/// writing, and who denies writing (`denies`, for a descriptor that only reads) while anybody on
/// this machine has the file open for writing.
bool enter_sharing(int descriptor, bool writes, bool denies);

void leave_sharing(int descriptor);

/// Whether the system tells at once who has a file of the user's own open for writing. Where it
/// does not, the processes that can be seen are looked through.
TARNEL_PLATFORM_API bool system_tells_of_writers();

} // namespace tarnel
