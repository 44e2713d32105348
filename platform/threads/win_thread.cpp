#include "platform/base/last_error.h"
#include "platform/threads/thread.h"
#include "platform/threads/wait.h"

#include <memory>

namespace {

DWORD run_win_thread(LPVOID argument) {
    auto* thread = static_cast<CWinThread*>(argument);
    const UINT result = thread->m_pfnThreadProc(thread->m_pThreadParams);
    if (thread->m_bAutoDelete) {
        delete thread;
    }
    return result;
}

} // namespace

CWinThread::~CWinThread() {
    if (m_hThread) {
        CloseHandle(m_hThread);
    }
}

CWinThread* AfxBeginThread(AFX_THREADPROC procedure, LPVOID argument, int priority, UINT stack_size,
                           DWORD flags, void* attributes) {
    if (!procedure || priority != THREAD_PRIORITY_NORMAL || (flags & ~CREATE_SUSPENDED) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto thread = std::make_unique<CWinThread>(procedure, argument);
    // Suspended at first in any case: the object must know its handle before the thread runs.
    thread->m_hThread = CreateThread(attributes, stack_size, &run_win_thread, thread.get(),
                                     CREATE_SUSPENDED, nullptr);
    if (!thread->m_hThread) {
        return nullptr;
    }
    CWinThread* started = thread.release();
    if (!(flags & CREATE_SUSPENDED)) {
        // From here on the thread may have deleted the object.
        ::ResumeThread(started->m_hThread);
    }
    return started;
}
