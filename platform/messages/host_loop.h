#pragma once

#include "platform/base/export.h"
#include "platform/threads/host_wait.h"

// An application that owns an event loop (poll, Qt, GLib, ...) hosts the library in it: the loop
// listens to one descriptor a thread and runs what is pending when that is readable. Nested loops
// of the layer can in turn sleep in the application's own wait, so that it stays alive meanwhile.

namespace tarnel {

/// The calling thread's descriptor: readable while there may be something to run, level-triggered,
/// and open until the thread ends. Not to be read or closed. -1 when no descriptor is left.
TARNEL_PLATFORM_API int message_descriptor();

/// Runs what is pending on the calling thread without waiting: what was sent, then as many posted
/// messages as there were at the call (the descriptor stays readable for the rest). False once
/// WM_QUIT is met; `exit_code`, unless null, then receives its code. Inside a host's wait it does
/// nothing: the loop that waits there will run the messages.
TARNEL_PLATFORM_API bool run_pending_messages(int* exit_code = nullptr);

/// Has nested loops of the calling thread sleep in `host`; an empty one ends that.
TARNEL_PLATFORM_API void set_host_wait(HostWait host);

} // namespace tarnel
