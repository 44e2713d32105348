// The reader thread of a serial device.

#include "platform/base/last_error.h"
#include "platform/messages/message.h"
#include "platform/messages/wait_messages.h"
#include "platform/threads/clock.h"
#include "serial/ComDevice.h"

#include <algorithm>

namespace {

/// A wait that failed (somebody has cleared the mask, no descriptor is left) is tried again then.
constexpr DWORD failed_wait_pause = 10; // milliseconds

} // namespace

void CComDevice::OnThreadStart() {}

void CComDevice::OnThreadEnd() {}

int CComDevice::OnReadCommBlock() {
    COMSTAT status{};
    DWORD errors = 0;
    DWORD count = 0;
    const bool known = ClearCommError(m_hPort, &errors, &status) != FALSE;
    const DWORD wanted = known ? std::min(status.cbInQue, receive_buffer_size) : 0;
    if (wanted == 0) {
        return 0;
    }
    if (!ReadFile(m_hPort, m_pReceiveBuffer.get(), wanted, &count, &m_ReadOverlap)) {
        const bool pending = GetLastError() == ERROR_IO_PENDING;
        if (!pending || !GetOverlappedResult(m_hPort, &m_ReadOverlap, &count, TRUE)) {
            ClearCommError(m_hPort, &errors, nullptr);
            return pending ? static_cast<int>(count) : 0;
        }
    }
    return static_cast<int>(count);
}

int CComDevice::StartThread() {
    m_pReaderThread = AfxBeginThread(&CComDevice::ReaderThreadProc, this, THREAD_PRIORITY_NORMAL, 0,
                                     CREATE_SUSPENDED);
    if (!m_pReaderThread) {
        return 0;
    }
    m_pReaderThread->m_bAutoDelete = FALSE;
    m_pReaderThread->ResumeThread();
    return 1;
}

UINT CComDevice::ReaderThreadProc(LPVOID device) {
    return static_cast<CComDevice*>(device)->ReadUntilStopped();
}

UINT CComDevice::ReadUntilStopped() {
    OnThreadStart();
    if (!SetCommMask(m_hPort, EV_RXCHAR | EV_CTS | EV_ERR)) {
        return 0xFFFFFFFF;
    }
    while (!m_bStop) {
        DWORD events = 0;
        DWORD unused = 0;
        if (!WaitCommEvent(m_hPort, &events, &m_WaitOverlap) &&
            (GetLastError() != ERROR_IO_PENDING ||
             !GetOverlappedResult(m_hPort, &m_WaitOverlap, &unused, TRUE))) {
            Sleep(failed_wait_pause);
        }
        if (m_bStop) {
            break;
        }
        if ((events & EV_RXCHAR) && !ReadWaiting()) {
            return 0;
        }
        if (events == 0) { // ended by a change of the mask
            ClearCommError(m_hPort, nullptr, nullptr);
        }
    }
    OnThreadEnd();
    return 0;
}

/// False when the subclass has had enough.
bool CComDevice::ReadWaiting() {
    int count = 0;
    do {
        count = OnReadCommBlock();
    } while (count > 0);
    return count == 0;
}

void CComDevice::StopThread() {
    if (!m_pReaderThread) {
        return;
    }
    m_pReaderThread->m_bAutoDelete = FALSE;
    m_bStop = 1;
    SetCommMask(m_hPort, 0);
    constexpr DWORD slice = 100; // milliseconds
    const HANDLE thread = m_pReaderThread->m_hThread;
    for (;;) {
        SetCommMask(m_hPort, EV_RXCHAR);
        SetCommMask(m_hPort, 0);
        const DWORD result = MsgWaitForMultipleObjects(1, &thread, FALSE, slice, QS_ALLINPUT);
        if (result != WAIT_OBJECT_0 + 1 && result != WAIT_TIMEOUT) {
            break;
        }
        DispatchWaitingMessages();
    }
    // A wait that failed must not leave the thread behind with an object that is gone.
    DWORD code = 0;
    while (GetExitCodeThread(thread, &code) && code == STILL_ACTIVE) {
        Sleep(failed_wait_pause);
    }
    delete m_pReaderThread;
    m_pReaderThread = nullptr;
    m_bStop = 0;
}

/// The reader may be sending to a window of this thread, so its messages go on.
void CComDevice::DispatchWaitingMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        SetCommMask(m_hPort, EV_RXCHAR);
        SetCommMask(m_hPort, 0);
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageA(&message);
        if (WaitForSingleObject(m_pReaderThread->m_hThread, 0) == WAIT_OBJECT_0) {
            return;
        }
    }
}
