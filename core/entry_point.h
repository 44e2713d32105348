#pragma once

#include "platform/base/types.h"

namespace tarnel {

/// The library's own module, whose resources are in the language it falls back to; null before the
/// library is attached.
HINSTANCE library_module();

} // namespace tarnel
