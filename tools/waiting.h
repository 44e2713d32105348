#pragma once

#include <chrono>
#include <optional>

using Deadline = std::chrono::steady_clock::time_point;

// Waits that end early, with false, when the descriptor `stop` is readable.

/// Waits until the time has come.
bool pause_until(int stop, Deadline deadline);

/// Waits until `descriptor` is ready for `events`, as poll has them, or has hung up.
bool wait_ready(int stop, int descriptor, short events);

/// Waits until the verb is to end, at the latest after so many seconds; nothing: without limit.
void wait_for_end(int stop, std::optional<double> seconds);

/// Ends what waits for a StopSignal of this process, as Ctrl+C does.
void ask_to_stop();
