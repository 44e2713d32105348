#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Which modules are current. Every thread has its own, starting with the executable in both.
struct AFX_MODULE_STATE {
    HINSTANCE m_hCurrentInstanceHandle;
    HINSTANCE m_hCurrentResourceHandle; ///< searched first for resources
};

/// The calling thread's state, owned by the layer and valid until the thread ends. A resource
/// handle that was set to null is the executable's again.
TARNEL_PLATFORM_API AFX_MODULE_STATE* AfxGetModuleState();

/// The calling thread's current resource handle, never null.
TARNEL_PLATFORM_API HINSTANCE AfxGetResourceHandle();

TARNEL_PLATFORM_API void AfxSetResourceHandle(HINSTANCE module);
