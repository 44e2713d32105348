#pragma once

namespace tarnel {

/// The wait of an application's own event loop. It returns when `descriptor` is readable or after
/// `milliseconds` (-1: no limit), and keeps the application alive meanwhile; it may return early.
struct HostWait {
    void (*wait)(void* context, int descriptor, int milliseconds) = nullptr;
    void* context = nullptr;
};

} // namespace tarnel
