#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Base of a library's locale manager, which chooses the module that its dialogs and strings come
/// from. It keeps the module that it was attached to.
class TARNEL_PLATFORM_API lmLocaleManagerBase {
  public:
    lmLocaleManagerBase();
    lmLocaleManagerBase(const lmLocaleManagerBase&) = delete;
    lmLocaleManagerBase& operator=(const lmLocaleManagerBase&) = delete;

    /// At the library's process attach, with its own module.
    virtual void attach(HINSTANCE module);

    /// At the library's process detach.
    virtual void detach();

    virtual ~lmLocaleManagerBase();

  protected:
    HINSTANCE attached_module() const { return attached_module_; }

  private:
    HINSTANCE attached_module_ = nullptr;
};
