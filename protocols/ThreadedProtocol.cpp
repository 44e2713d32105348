#include "protocols/ThreadedProtocol.h"

#include "platform/threads/clock.h"

#include <utility>

IMPLEMENT_DYNAMIC(CMMProtocolWithThread, _CMMProtocol)

namespace {

constexpr DWORD look_at_worker_every = 100; ///< ms

} // namespace

CMMProtocolWithThread::CMMProtocolWithThread() = default;

CMMProtocolWithThread::~CMMProtocolWithThread() {
    CMMProtocolWithThread::EndThread();
    CMMProtocolWithThread::Disconnect();
}

void CMMProtocolWithThread::OnStartTransaction() {
    const tarnel::SectionGuard guard(m_Lock);
    m_bTransactionStarted = 1;
    m_TransactionEvent.SetEvent();
}

void CMMProtocolWithThread::OnStopTransaction() {
    const tarnel::SectionGuard guard(m_Lock);
    m_bTransactionStarted = 0;
    m_TransactionEvent.SetEvent();
}

int CMMProtocolWithThread::Connect() {
    m_bConnected = StartThread();
    if (!m_bConnected) {
        return 0;
    }
    const tarnel::SectionGuard guard(m_Lock);
    OnPostConnection();
    return m_bConnected;
}

int CMMProtocolWithThread::Disconnect() {
    EndThread();
    m_bConnected = 0;
    return 1;
}

int CMMProtocolWithThread::IsConnected() {
    const tarnel::SectionGuard guard(m_Lock);
    return m_bConnected;
}

int CMMProtocolWithThread::IsTransactionStarted() {
    return m_bTransactionStarted;
}

int CMMProtocolWithThread::StartThread() {
    if (m_pThread) {
        return 1;
    }
    m_ExitEvent.ResetEvent();
    m_pThread = AfxBeginThread(GetThreadProc(), this, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    if (!m_pThread) {
        return 0;
    }
    m_pThread->m_bAutoDelete = FALSE;
    m_pThread->ResumeThread();
    return 1;
}

int CMMProtocolWithThread::EndThread() {
    if (!m_pThread) {
        return 1;
    }
    m_bExitRequested = 1;
    m_ExitEvent.SetEvent();
    DWORD exit_code = STILL_ACTIVE;
    do {
        Sleep(look_at_worker_every);
    } while (GetExitCodeThread(m_pThread->m_hThread, &exit_code) && exit_code == STILL_ACTIVE);
    delete std::exchange(m_pThread, nullptr);
    m_bExitRequested = 0;
    return 1;
}

void CMMProtocolWithThread::SuspendThread() {
    m_SuspendLock.LockWith(m_SuspendEvent);
}

void CMMProtocolWithThread::ResumeThread() {
    m_SuspendLock.Unlock();
}
