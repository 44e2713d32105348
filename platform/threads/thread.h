#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

constexpr DWORD STILL_ACTIVE = 259;
constexpr DWORD CREATE_SUSPENDED = 4;
constexpr int THREAD_PRIORITY_NORMAL = 0;

using LPTHREAD_START_ROUTINE = DWORD (*)(LPVOID);
using AFX_THREADPROC = UINT (*)(LPVOID);

/// Starts a thread and returns its handle, or null with the last error. `stack_size` 0 is the
/// usual size; `flags` is 0 or CREATE_SUSPENDED; `attributes` must be null. The thread takes no
/// signals: they stay with the application's own threads. `id` must be null. The handle becomes and
/// stays signalled when the thread has ended; closing it never ends the thread.
TARNEL_PLATFORM_API HANDLE CreateThread(void* attributes, std::size_t stack_size,
                                        LPTHREAD_START_ROUTINE procedure, LPVOID argument,
                                        DWORD flags, DWORD* id);

/// The suspend count before the call (the thread runs when it was 0 or 1), 0xFFFFFFFF on error.
TARNEL_PLATFORM_API DWORD ResumeThread(HANDLE thread);

/// What the thread's procedure returned; STILL_ACTIVE while it runs.
TARNEL_PLATFORM_API BOOL GetExitCodeThread(HANDLE thread, DWORD* exit_code);

/// A number for the calling thread that no other thread of the process has or had.
TARNEL_PLATFORM_API DWORD GetCurrentThreadId();

/// The framework's thread object. With `m_bAutoDelete`, which may be changed before the thread
/// first runs, the ending thread deletes it; otherwise it belongs to who started the thread, and
/// its destructor closes the handle.
class TARNEL_PLATFORM_API CWinThread {
  public:
    CWinThread(AFX_THREADPROC procedure, LPVOID argument)
        : m_pThreadParams(argument), m_pfnThreadProc(procedure) {}

    CWinThread(const CWinThread&) = delete;
    CWinThread& operator=(const CWinThread&) = delete;
    virtual ~CWinThread();

    DWORD ResumeThread() { return ::ResumeThread(m_hThread); }

    BOOL m_bAutoDelete = TRUE;
    HANDLE m_hThread = nullptr;
    const LPVOID m_pThreadParams;
    const AFX_THREADPROC m_pfnThreadProc;
};

/// Starts a thread on `procedure`; null, with nothing left behind, when that fails. Only
/// THREAD_PRIORITY_NORMAL is offered.
TARNEL_PLATFORM_API CWinThread* AfxBeginThread(AFX_THREADPROC procedure, LPVOID argument,
                                               int priority = THREAD_PRIORITY_NORMAL,
                                               UINT stack_size = 0, DWORD flags = 0,
                                               void* attributes = nullptr);
