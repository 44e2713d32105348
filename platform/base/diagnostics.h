#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <string_view>

// Two channels that tell a person what happens inside. Both may be written from any thread, and
// both sinks are called under the channel's lock: a sink writes, and calls nothing of the layer.

/// Writes `text` as it is to the debugger output, without a line end of its own. The output is off
/// unless the environment variable TARNEL_DEBUG names "stderr" or a file to append to (read at the
/// first call), or the application has set a sink. A null `text` writes nothing.
TARNEL_PLATFORM_API void OutputDebugStringA(LPCSTR text);

namespace tarnel {

/// Receives one piece of output; `context` is what was given with the sink.
using DiagnosticSink = void (*)(void* context, std::string_view text);

/// Sends the debugger output to `sink` instead; null switches back to what TARNEL_DEBUG says.
TARNEL_PLATFORM_API void set_debug_sink(DiagnosticSink sink, void* context);

/// Sends the layer's reports to `sink` instead; null switches back to standard error.
TARNEL_PLATFORM_API void set_report_sink(DiagnosticSink sink, void* context);

/// What the layer itself has to report: one line (given without its end) a change of state.
TARNEL_PLATFORM_API void report(std::string_view line);

} // namespace tarnel
