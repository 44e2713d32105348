#include "platform/threads/clock.h"
#include "platform/threads/wait.h"
#include "protocols/ThreadedProtocol.h"
#include "tests/support/client_window.h"
#include "tests/support/process_facts.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// A machine whose worker moves on all the time while a transaction runs, and then reports a point.
class Machine : public CMMProtocolWithThread {
  public:
    ~Machine() override { Disconnect(); }

    AFX_THREADPROC GetThreadProc() override {
        return [](LPVOID machine) { return static_cast<Machine*>(machine)->work(); };
    }

    CString GetInfoString() override { return ""; }

    int EditProtocolParameters() override { return 0; }

    void OnPostConnection() override { ++post_connections; }

    using CMMProtocolWithThread::ResumeThread;
    using CMMProtocolWithThread::SuspendThread;

    int post_connections = 0;
    std::atomic<int> workers = 0; ///< that run now
    std::atomic<int> workers_so_far = 0;
    std::atomic<int> steps = 0;
    std::atomic<int> parks = 0; ///< that are over
    std::atomic<int> looks = 0; ///< at the transaction
    std::atomic<int> asked_to_end = 0;

  private:
    UINT work() {
        ++workers;
        ++workers_so_far;
        m_SuspendLock.Lock();
        const HANDLE events[] = {m_ExitEvent, m_SuspendEvent, m_TransactionEvent};
        for (DWORD event = WAIT_TIMEOUT; event != WAIT_OBJECT_0;) {
            event = WaitForMultipleObjects(3, events, FALSE, IsTransactionStarted() ? 0 : INFINITE);
            if (event == WAIT_OBJECT_0 + 1) {
                m_SuspendLock.Unlock();
                m_SuspendLock.Lock();
                ++parks;
            } else if (event == WAIT_OBJECT_0 + 2) {
                m_TransactionEvent.ResetEvent();
                ++looks;
                report();
            } else if (event == WAIT_TIMEOUT) {
                ++steps;
            }
        }
        asked_to_end = ThreadExitRequested();
        m_SuspendLock.Unlock();
        --workers;
        return 0;
    }

    void report() {
        const tarnel::SectionGuard guard(m_Lock);
        ++m_LastPoint.number;
        SendMessageToClient(MEASURED_POINT);
    }
};

TEST(ThreadedProtocol, RunsOneWorkerWhileItIsConnected) {
    Machine machine;
    EXPECT_EQ(machine.Disconnect(), 1);
    EXPECT_EQ(machine.IsConnected(), 0);
    for (int round = 1; round <= 2; ++round) {
        EXPECT_EQ(machine.Connect(), 1);
        EXPECT_EQ(machine.Connect(), 1);
        EXPECT_EQ(machine.IsConnected(), 1);
        EXPECT_EQ(machine.post_connections, 2 * round);
        if (round == 2) { // the first one may be stopped before it has begun
            machine.OnStartTransaction();
            EXPECT_TRUE(support::dispatch_until([&] { return machine.steps > 0; }));
        }
        const DWORD start = GetTickCount();
        EXPECT_EQ(machine.Disconnect(), 1);
        EXPECT_GE(GetTickCount() - start, 99U);
        EXPECT_EQ(machine.workers, 0);
        EXPECT_EQ(machine.workers_so_far, round);
        EXPECT_EQ(machine.asked_to_end, 1);
        EXPECT_EQ(machine.ThreadExitRequested(), 0);
        EXPECT_EQ(machine.IsConnected(), 0);
    }
}

TEST(ThreadedProtocol, TellsTheWorkerOfTransactions) {
    support::ClientWindow client;
    Machine machine;
    machine.Initialize(&client);
    machine.OnStartTransaction();
    machine.OnStopTransaction(); // before the worker looks
    ASSERT_EQ(machine.Connect(), 1);
    EXPECT_TRUE(support::dispatch_until([&] { return client.told() == "point 2"; }));
    EXPECT_EQ(machine.IsTransactionStarted(), 0);
    EXPECT_EQ(machine.steps, 0);
    machine.OnStartTransaction();
    EXPECT_TRUE(support::dispatch_until([&] { return machine.steps > 100; }));
    EXPECT_EQ(machine.looks, 2);
    EXPECT_EQ(client.told(), "") << "the point before is not acknowledged";
    machine.OnStopTransaction();
    EXPECT_TRUE(support::dispatch_until([&] { return machine.looks == 3; }));
}

TEST(ThreadedProtocol, ParksTheWorkerWhileItIsSuspended) {
    Machine machine;
    ASSERT_EQ(machine.Connect(), 1);
    int parks = 0;
    for (const bool busy : {true, false}) {
        busy ? machine.OnStartTransaction() : machine.OnStopTransaction();
        for (int round = 0; round < 100; ++round) {
            machine.SuspendThread();
            const int before = machine.steps;
            for (int i = 0; i < 100; ++i) {
                ASSERT_EQ(machine.steps, before);
            }
            machine.ResumeThread();
            ++parks;
            while (machine.parks < parks) {
                Sleep(0);
            }
        }
    }
}

TEST(ThreadedProtocol, StopsItsWorkerWhenItIsDestroyed) {
    const auto before = support::process_facts();
    {
        const auto machine = std::make_unique<Machine>();
        machine->OnStartTransaction();
        ASSERT_EQ(machine->Connect(), 1);
    }
    EXPECT_TRUE(support::back_to(before));
}

} // namespace
