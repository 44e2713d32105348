#pragma once

#include "core/export.h"
#include "platform/base/string_array.h"

/// Replaces `fields` by the parts of `text` between the separators (not zero), empty ones too, and
/// returns how many there are: one more than separators.
TARNEL_API INT_PTR SplitLine(LPCSTR text, CStringArray& fields, char separator);

/// Waits until a file that another program writes is there, can be read, and is open for writing
/// nowhere: 1, or 0 after `timeout_ms` milliseconds.
TARNEL_API int WaitForFile(LPCSTR path, DWORD timeout_ms);
