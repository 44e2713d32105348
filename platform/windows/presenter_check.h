#pragma once

#include "platform/base/export.h"

#include <string>
#include <vector>

// Whether dialogs can be shown, for who wants to know it beforehand.

namespace tarnel {

/// Where the program that shows dialogs is looked for, the first first: what TARNEL_PRESENTER names
/// (perhaps ""), else beside the layer's library and in the folders that belong to it.
TARNEL_PLATFORM_API std::vector<std::string> presenter_places();

/// Why the program cannot show dialogs on the display now, with what it says of it, in one line; ""
/// when it can. Starts it and ends it again, which takes ten seconds at most.
TARNEL_PLATFORM_API std::string presenter_fault();

} // namespace tarnel
