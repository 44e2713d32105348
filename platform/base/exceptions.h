#pragma once

#include "platform/base/object.h"

// The framework's exceptions are thrown as pointers; who catches one calls its Delete().

class TARNEL_PLATFORM_API CException : public CObject {
    DECLARE_DYNAMIC(CException)

    void Delete() { delete this; }

  protected:
    CException();
    ~CException() override;
};

/// What the user has been told already: the operation ends, nothing more is shown.
class TARNEL_PLATFORM_API CUserException final : public CException {
    DECLARE_DYNAMIC(CUserException)

    CUserException();

  private:
    ~CUserException() override;
};

/// Something was asked for that is not there.
class TARNEL_PLATFORM_API CNotSupportedException final : public CException {
    DECLARE_DYNAMIC(CNotSupportedException)

    CNotSupportedException();

  private:
    ~CNotSupportedException() override;
};

[[noreturn]] TARNEL_PLATFORM_API void AfxThrowUserException();
[[noreturn]] TARNEL_PLATFORM_API void AfxThrowNotSupportedException();
