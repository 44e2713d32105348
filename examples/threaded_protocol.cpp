// A machine that is asked for its position, as a protocol with a worker thread: one question and
// one answer at a time over a serial line. The machine is played on a pseudo terminal.

#include "platform/threads/wait.h"
#include "protocols/ThreadedProtocol.h"
#include "serial/ComDevice.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

struct PositionProtocol final : CMMProtocolWithThread {
    ~PositionProtocol() override { Disconnect(); }

    CString GetInfoString() override { return device.m_Configuration.GetInfoString(); }

    int EditProtocolParameters() override { return device.EditParameters(); }

    AFX_THREADPROC GetThreadProc() override {
        return [](LPVOID protocol) { return static_cast<PositionProtocol*>(protocol)->work(); };
    }

    void send(LPCSTR command) { // not in the middle of a question and its answer
        SuspendThread();
        device.WriteCommBlock(command);
        ResumeThread();
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
        device.WriteCommBlock("?\r");
        if (device.ReadCommLine(answer, 1000) != CComDevice::read_failed) {
            const tarnel::SectionGuard guard(m_Lock);
            __PointMMT& p = m_LastPoint;
            std::sscanf(answer, "%d %lf %lf %lf", &p.number, &p.x, &p.y, &p.z);
            SendMessageToClient(MEASURED_POINT);
        }
    }

    CComDevice device; ///< without a reader thread of its own: the worker reads
};

/// Answers "?" with the machine's position; ends with any other command.
void play_machine(int line) {
    char command[2];
    for (int i = 0; ::read(line, command, 2) == 2 && *command == '?'; ++i) {
        ::dprintf(line, "%d %d.5 20.25 -3.125\r", i, i);
    }
}

int main() {
    const int line = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::grantpt(line);
    ::unlockpt(line);
    PositionProtocol protocol;
    CWnd client; // the application's window
    client.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    protocol.Initialize(&client);
    protocol.device.m_Configuration.SetPortName(::ptsname(line));
    if (!protocol.device.OpenConnection(0) || !protocol.Connect()) {
        return 1;
    }
    std::thread machine(play_machine, line);
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
    protocol.send("!\r");
    machine.join();
    return protocol.Disconnect() ? 0 : 1;
}
