#include "platform/base/last_error.h"
#include "platform/threads/clock.h"
#include "platform/threads/critical_section.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"
#include "platform/threads/wait.h"
#include "tests/support/process_facts.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using support::Worker;

TEST(Events, AutomaticOnesLetOneWaiterPassAndManualOnesAll) {
    CEvent automatic;
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_TIMEOUT);
    automatic.SetEvent();
    automatic.SetEvent();
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 20), WAIT_TIMEOUT);

    CEvent manual(TRUE, TRUE);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(manual, INFINITE), WAIT_OBJECT_0);
    manual.ResetEvent();
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_TIMEOUT);
}

TEST(Waits, TakeTheLowestIndexAndConsumeNothingElse) {
    CEvent a, b, c;
    const HANDLE all[] = {a, b, c};
    b.SetEvent();
    c.SetEvent();
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 0), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 0), WAIT_TIMEOUT);
}

TEST(Waits, ForAllTakeAllAtOneMomentOrNone) {
    CEvent a, b;
    const HANDLE both[] = {a, b};
    a.SetEvent();
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 10), WAIT_TIMEOUT);
    std::atomic<DWORD> result = WAIT_FAILED;
    {
        Worker waiter([&] { return result = WaitForMultipleObjects(2, both, TRUE, INFINITE); });
        // The waiting thread must not have taken `a` for itself meanwhile.
        EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_OBJECT_0);
        b.SetEvent();
        EXPECT_EQ(WaitForSingleObject(waiter.handle, 20), WAIT_TIMEOUT);
        a.SetEvent();
    }
    EXPECT_EQ(result, WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_TIMEOUT);
}

TEST(Waits, RefuseWhatIsNoOpenHandle) {
    HANDLE closed = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    EXPECT_TRUE(CloseHandle(closed));
    CEvent in_its_place(TRUE, TRUE);
    EXPECT_EQ(WaitForSingleObject(closed, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(closed));
    std::vector<HANDLE> many(65, in_its_place);
    EXPECT_EQ(WaitForMultipleObjects(65, many.data(), FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForMultipleObjects(64, many.data(), FALSE, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(2, many.data(), TRUE, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForMultipleObjects(0, many.data(), FALSE, 0), WAIT_FAILED);
}

TEST(Waits, EndAtTheirDeadlineThoughTheBellRings) {
    CEvent wanted, other, stop(FALSE, TRUE);
    // The other object's signals wake the wait again and again without ending it.
    Worker noise([&] {
        while (WaitForSingleObject(stop, 1) == WAIT_TIMEOUT) {
            other.SetEvent();
        }
        return 0U;
    });
    const HANDLE both[] = {wanted, other};
    const DWORD start = GetTickCount();
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 100), WAIT_TIMEOUT);
    EXPECT_GE(GetTickCount() - start, 90U); // the tick has steps
    stop.SetEvent();
}

TEST(Events, APulseReachesThoseWhoWaitAndNobodyLater) {
    CEvent manual(FALSE, TRUE), automatic;
    for (CEvent* event : {&manual, &automatic}) {
        std::atomic<int> passed = 0;
        {
            const auto work = [&] {
                const DWORD result = WaitForSingleObject(*event, INFINITE);
                ++passed;
                return result;
            };
            Worker first(work), second(work), third(work);
            for (; passed < 3; Sleep(1)) { // one that is only on its way misses a pulse
                event->PulseEvent();
            }
        }
        EXPECT_EQ(WaitForSingleObject(*event, 0), WAIT_TIMEOUT);
    }
}

TEST(CriticalSections, KeepOthersOutUntilTheLastLeave) {
    CCriticalSection section;
    int guarded = 0;
    {
        const auto work = [&] {
            for (int i = 0; i < 10'000; ++i) {
                section.Lock();
                section.Lock();
                ++guarded;
                section.Unlock();
                ++guarded;
                section.Unlock();
            }
            return 0U;
        };
        Worker first(work), second(work);
    }
    EXPECT_EQ(guarded, 40'000);
}

TEST(Threads, ReportTheirEndLast) {
    CEvent go(FALSE, TRUE);
    Worker worker([&] {
        WaitForSingleObject(go, INFINITE);
        return 42U;
    });
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(worker.handle, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(worker.handle, 0), WAIT_TIMEOUT);
    go.SetEvent();
    EXPECT_EQ(WaitForSingleObject(worker.handle, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(worker.handle, &code));
    EXPECT_EQ(code, 42U);
    EXPECT_EQ(WaitForSingleObject(worker.handle, 0), WAIT_OBJECT_0); // and stays signalled
}

TEST(Threads, FrameworkThreadsBelongToTheirStarterOrToThemselves) {
    const auto before = support::process_facts();
    static std::atomic<int> runs;
    runs = 0;
    const auto procedure = [](LPVOID) -> UINT { return static_cast<UINT>(++runs); };

    CWinThread* kept =
        AfxBeginThread(procedure, nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_NE(kept, nullptr);
    kept->m_bAutoDelete = FALSE;
    EXPECT_EQ(WaitForSingleObject(kept->m_hThread, 20), WAIT_TIMEOUT);
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(kept->ResumeThread(), 1U);
    EXPECT_EQ(WaitForSingleObject(kept->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(kept->ResumeThread(), 0U);
    delete kept;

    EXPECT_NE(AfxBeginThread(procedure, nullptr), nullptr);
    EXPECT_TRUE(support::back_to(before)); // the object goes with its thread
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(AfxBeginThread(nullptr, nullptr), nullptr);
}

TEST(Threads, ManyComeAndGoWithoutATrace) {
    const auto before = support::process_facts();
    for (int round = 0; round < 200; ++round) {
        CEvent done(FALSE, TRUE);
        Worker one([&] { return WaitForSingleObject(done, INFINITE); });
        Worker two([&] { return static_cast<DWORD>(done.SetEvent()); });
        std::thread stranger([&] { WaitForSingleObject(done, INFINITE); });
        stranger.join();
    }
    EXPECT_TRUE(support::back_to(before));
}

} // namespace
