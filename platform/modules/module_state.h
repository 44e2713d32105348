#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Which modules are current. Every thread has its own, starting with the executable in both.
struct AFX_MODULE_STATE {
    HINSTANCE m_hCurrentInstanceHandle;
    HINSTANCE m_hCurrentResourceHandle; ///< searched first for resources
};

/// The state that is current on the calling thread: its own, which belongs to the layer and is
/// valid until the thread ends, or the one that an AFX_MAINTAIN_STATE2 has made current. A handle
/// in it that was set to null is the executable's again.
TARNEL_PLATFORM_API AFX_MODULE_STATE* AfxGetModuleState();

/// The calling thread's current resource handle, never null.
TARNEL_PLATFORM_API HINSTANCE AfxGetResourceHandle();

TARNEL_PLATFORM_API void AfxSetResourceHandle(HINSTANCE module);

/// Makes `state` current on the constructing thread, for as long as this object lives; null means
/// the thread's own. Scopes nest. The state stays the caller's and outlives the scope.
class TARNEL_PLATFORM_API AFX_MAINTAIN_STATE2 {
  public:
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* state);
    ~AFX_MAINTAIN_STATE2();

    AFX_MAINTAIN_STATE2(const AFX_MAINTAIN_STATE2&) = delete;
    AFX_MAINTAIN_STATE2& operator=(const AFX_MAINTAIN_STATE2&) = delete;

  private:
    AFX_MODULE_STATE* previous_;
};
