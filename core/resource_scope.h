#pragma once

#include "core/resource_manager.h"
#include "platform/modules/module_state.h"

/// Makes the resources of the user's language current on the constructing thread, for as long as
/// this object lives. Scopes nest, each restoring what it found.
class CLocaleResourceScope {
  public:
    CLocaleResourceScope() : saved_(AfxGetModuleState()->m_hCurrentResourceHandle) {
        AfxGetModuleState()->m_hCurrentResourceHandle =
            tarnel::resource_manager->get_resource_handle();
    }

    ~CLocaleResourceScope() {
        if (saved_) {
            AfxGetModuleState()->m_hCurrentResourceHandle = saved_;
        }
    }

    CLocaleResourceScope(const CLocaleResourceScope&) = delete;
    CLocaleResourceScope& operator=(const CLocaleResourceScope&) = delete;

  private:
    HINSTANCE saved_;
};
