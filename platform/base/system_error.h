#pragma once

#include "platform/base/types.h"

namespace tarnel {

/// The last error that stands for a system call's errno: the one place where files and ports are
/// translated.
DWORD error_from_errno(int error);

} // namespace tarnel
