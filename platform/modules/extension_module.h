#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <memory>

/// What an extension library keeps about itself.
struct AFX_EXTENSION_MODULE {
    BOOL bInitialized;
    HMODULE hModule;
    HMODULE hResource; ///< the module with its resources, at first itself
};

/// Fills `state` for the library `module`; nonzero.
TARNEL_PLATFORM_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module);

/// Removes the library of `state` from the chain of extension libraries, or all of them.
TARNEL_PLATFORM_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all = FALSE);

/// A library's place in the chain of extension libraries, which is searched for resources after
/// the current resource handle, the last library first; a system library is not searched. Created
/// with `new` and owned by the chain, until AfxTermExtensionModule.
class TARNEL_PLATFORM_API CDynLinkLibrary {
  public:
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL system = FALSE);

    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

    const HMODULE m_hModule;
    const HMODULE m_hResource;
    const BOOL m_bSystem;

  private:
    friend std::default_delete<CDynLinkLibrary>;
    ~CDynLinkLibrary() = default;
};
