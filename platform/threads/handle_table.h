#pragma once

#include "platform/base/last_error.h"
#include "platform/threads/waitable.h"

#include <memory>

namespace tarnel {

/// Makes a handle for `object`. A handle carries a generation: a closed one is recognised and
/// refused even after its place in the table serves another object.
HANDLE add_handle(std::shared_ptr<Waitable> object);

/// The object behind `handle`, or null.
std::shared_ptr<Waitable> find_handle(HANDLE handle);

/// The object behind `handle` when it is of this kind; otherwise null with ERROR_INVALID_HANDLE
/// as last error.
template <typename Kind>
std::shared_ptr<Kind> find_handle_as(HANDLE handle) {
    auto object = std::dynamic_pointer_cast<Kind>(find_handle(handle));
    if (!object) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return object;
}

} // namespace tarnel
