#pragma once

#include "platform/companions/locale_manager_base.h"

/// Where the library's dialogs and strings come from.
class lmResourceManager {
  public:
    /// The module of the user's language, else the library's own.
    virtual HINSTANCE get_resource_handle() = 0;

  protected:
    ~lmResourceManager() = default;
};

/// The library's locale manager: one static object, complete before the entry point attaches it.
class lmLocaleManagerMFC final : public lmLocaleManagerBase, public lmResourceManager {
  public:
    HINSTANCE get_resource_handle() override;
};

extern lmLocaleManagerMFC locale_manager;
