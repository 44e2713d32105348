#include "platform/messages/message.h"
#include "platform/messages/wait_messages.h"
#include "platform/threads/clock.h"
#include "protocols/MetrolecProtocol.h"
#include "protocols/PercevalProtocol.h"
#include "tests/support/allocations.h"
#include "tests/support/message_window.h"
#include "tests/support/pty.h"

#include <gtest/gtest.h>

namespace {

struct Counter final : tarnel::PointObserver {
    void OnPoint(const __PointMMT&, int, const tarnel::ReadTime&) override { ++points; }

    int points = 0;
};

/// Everything that an application does with its queue, `rounds` times.
void exchange(HWND window, std::uint64_t rounds) {
    MSG message;
    for (std::uint64_t i = 0; i < rounds; ++i) {
        PostMessageA(window, WM_USER, i, 0);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
        GetMessageA(&message, nullptr, 0, 0);
        DispatchMessageA(&message);
        SendMessageA(window, WM_USER, i, 0);
    }
}

TEST(Allocation, AWarmQueueAllocatesNothing) {
    const support::MessageWindow window(support::ignore);
    exchange(window.handle, 100);
    const std::size_t before = support::allocations();
    exchange(window.handle, 50'000);
    EXPECT_EQ(support::allocations(), before);
    EXPECT_GT(before, 0U) << "allocations are not counted";
}

TEST(Allocation, PointsReachTheirClientWithoutAny) {
    CWnd client;
    client.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    MPOProtocol metrolec;
    PercevalMicronProtocol perceval;
    for (CMMProtocolRS232* const protocol :
         {static_cast<CMMProtocolRS232*>(&metrolec), static_cast<CMMProtocolRS232*>(&perceval)}) {
        support::Pty machine;
        Counter counter;
        protocol->m_Device.m_Configuration.SetPortName(machine.path().c_str());
        protocol->Initialize(&client);
        protocol->SetPointObserver(&counter);
        ASSERT_EQ(protocol->Connect(), 1);
        std::size_t before = 0;
        for (int i = 0; i < 2'000; ++i) {
            if (i == 100) { // the thread has settled
                before = support::allocations();
            }
            // Two METROLEC records, or one of the others.
            machine.send("+1 +2 +3 -\r+4 -5 +6 +\r");
            for (MSG message; !PeekMessageA(&message, client.m_hWnd, 0, 0, PM_REMOVE);) {
                Sleep(0);
            }
            protocol->AcknowledgeLastPoint();
        }
        EXPECT_EQ(support::allocations(), before);
        EXPECT_EQ(protocol->Disconnect(), 1);
        EXPECT_GE(counter.points, 2'000);
    }
}

} // namespace
