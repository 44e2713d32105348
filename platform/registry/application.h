#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"
#include "platform/registry/registry.h"

#include <string>

class CException;
class CWnd;
struct MSG;

/// The application as the framework knows it: one object, usually static, made before anything asks
/// for it. Its settings lie below `HKEY_CURRENT_USER\Software\<registry key>\<profile name>`.
class TARNEL_PLATFORM_API CWinApp {
  public:
    /// Becomes the current application, until it is destroyed.
    CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;
    virtual ~CWinApp();

    /// Sets the registry key, usually the company's name. Null or empty: none, as at the start.
    void SetRegistryKey(LPCSTR company);

    /// The key of `section`, made when missing, with read and write access; the caller closes it.
    /// Null when there is no registry key or the section's key cannot be had.
    HKEY GetSectionKey(LPCSTR section);

    /// A framework exception has left the handler of `message`; the result becomes the message's.
    /// The base writes one line to the report channel and gives 0. The exception is the caller's.
    virtual LRESULT ProcessWndProcException(CException* exception, const MSG* message);

    /// The executable's name without its folder, unless the application sets another one, which it
    /// keeps alive.
    LPCSTR m_pszProfileName;

    /// Owns the dialogs that have no other owner; the application's to set and to clear.
    CWnd* m_pMainWnd = nullptr;

  private:
    std::string executable_;
    std::string registry_key_;
};

/// The current application, null when there is none.
TARNEL_PLATFORM_API CWinApp* AfxGetApp();

namespace tarnel {

/// The executable's name without its folder.
std::string executable_name();

/// Ends a framework exception that has left the handler of `message`, as the current application
/// wants it, and deletes it. The message's result.
LRESULT answer_exception(CException* exception, const MSG& message);

} // namespace tarnel
