#pragma once

#include "platform/threads/event.h"
#include "platform/threads/thread.h"
#include "protocols/Protocol.h"
#include "protocols/SuspendLock.h"

/// The base of the protocols that run a worker thread, usually to carry on a dialogue with the
/// machine. Connected means that the worker runs. The worker's procedure gets the protocol object,
/// and
/// - ends soon after `m_ExitEvent` is signalled, with any result but 259: Disconnect waits for it
///   without limit;
/// - holds `m_SuspendLock` while it works, and when `m_SuspendEvent` is signalled releases it and
///   takes it again, which parks it as long as somebody has it suspended;
/// - looks at IsTransactionStarted() when `m_TransactionEvent` is signalled, and resets the event;
/// - stores points under `m_Lock` and tells of them with SendMessageToClient.
///
/// A concrete class calls Disconnect() in its own destructor, never on the worker.
class TARNEL_API CMMProtocolWithThread : public _CMMProtocol {
    DECLARE_DYNAMIC(CMMProtocolWithThread)

    CMMProtocolWithThread();
    ~CMMProtocolWithThread() override;

    void OnStartTransaction() override;
    void OnStopTransaction() override;
    int Connect() override;

    /// Waits for the worker's end, at least 100 ms; 1.
    int Disconnect() override;
    int IsConnected() override;

    virtual int IsTransactionStarted();

    /// The worker's procedure.
    virtual AFX_THREADPROC GetThreadProc() = 0;

    /// Nonzero while somebody waits for the worker's end.
    int ThreadExitRequested() { return m_bExitRequested; }

  protected:
    virtual int EndThread();
    virtual int StartThread();

    /// Parks the worker at its next stop, which this waits for; in pairs, on one thread.
    void SuspendThread();
    void ResumeThread();

    std::atomic<int> m_bTransactionStarted = 0;
    CEvent m_TransactionEvent{FALSE, TRUE};
    CEvent m_ExitEvent{FALSE, TRUE};
    CEvent m_SuspendEvent{FALSE, FALSE};
    tarnel::SuspendLock m_SuspendLock;
    std::atomic<int> m_bExitRequested = 0;
    CWinThread* m_pThread = nullptr;
    std::atomic<int> m_bConnected = 0;
};
