#pragma once

#include "platform/base/types.h"

/// Where the library's dialogs and strings come from.
class lmResourceManager {
  public:
    /// The module of the user's language, else the library's own.
    virtual HINSTANCE get_resource_handle() = 0;

  protected:
    ~lmResourceManager() = default;
};

namespace tarnel {

/// The library's locale manager, as all of the library but its entry point sees it.
extern lmResourceManager* const resource_manager;

} // namespace tarnel
