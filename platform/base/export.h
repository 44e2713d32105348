#pragma once

/// Marks what the framework layer exports; everything else stays inside it.
#define TARNEL_PLATFORM_API __attribute__((visibility("default")))

/// For a thread-local pointer of the layer that is looked at all the time: found without a call, at
/// the price of a place in the small block that the loader keeps for libraries that are loaded at
/// run time.
#define TARNEL_FAST_THREAD_LOCAL __attribute__((tls_model("initial-exec")))
