// A machine that is asked for its position, as a protocol with a worker thread: the question "?",
// and the answer "number x y z", one at a time over a serial line: threaded_protocol PORT

#include "platform/threads/wait.h"
#include "protocols/ThreadedProtocol.h"
#include "serial/ComDevice.h"

#include <cstdio>

struct PositionProtocol final : CMMProtocolWithThread {
    ~PositionProtocol() override { Disconnect(); }

    CString GetInfoString() override { return device.m_Configuration.GetInfoString(); }

    int EditProtocolParameters() override { return device.EditParameters(); }

    AFX_THREADPROC GetThreadProc() override {
        return [](LPVOID protocol) { return static_cast<PositionProtocol*>(protocol)->work(); };
    }

    UINT work() {
        const HANDLE events[] = {m_ExitEvent, m_SuspendEvent, m_TransactionEvent};
        while (!ThreadExitRequested()) {
            WaitForMultipleObjects(3, events, FALSE, IsTransactionStarted() ? 1 : INFINITE);
            m_TransactionEvent.ResetEvent();
            m_SuspendLock.Lock(); // here the worker is parked while somebody has it suspended
            if (IsTransactionStarted()) {
                ask_for_position();
            }
            m_SuspendLock.Unlock();
        }
        return 0;
    }

    void ask_for_position() {
        CString answer;
        __PointMMT p;
        device.WriteCommBlock("?\r");
        if (device.ReadCommLine(answer, 1000) != CComDevice::read_failed &&
            std::sscanf(answer, "%d %lf %lf %lf", &p.number, &p.x, &p.y, &p.z) == 4) {
            const tarnel::SectionGuard guard(m_Lock);
            m_LastPoint = p;
            SendMessageToClient(MEASURED_POINT);
        }
    }

    CComDevice device; ///< without a reader thread of its own: the worker reads
};

int main(int argc, char** argv) {
    CWnd client; // the application's window, which outlives the protocol
    PositionProtocol protocol;
    client.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    protocol.Initialize(&client);
    protocol.device.m_Configuration.SetPortName(argc > 1 ? argv[1] : "COM1:");
    if (!protocol.device.OpenConnection(0) || !protocol.Connect()) {
        return 1;
    }
    protocol.OnStartTransaction();
    const UINT point_message = RegisterWindowMessageA("CMMProtocolMessage");
    MSG message;
    for (int points = 0; points < 10 && GetMessageA(&message, nullptr, 0, 0) > 0;) {
        if (message.message == point_message) {
            const tarnel::SectionGuard guard(protocol.m_Lock);
            const __PointMMT& p = protocol.m_LastPoint;
            std::printf("point %d: %.3f %.3f %.3f mm\n", p.number, p.x, p.y, p.z);
            protocol.AcknowledgeLastPoint();
            ++points;
        }
    }
    protocol.OnStopTransaction();
    return protocol.Disconnect() ? 0 : 1;
}
