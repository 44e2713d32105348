#include "platform/windows/cmd_ui.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/message_box.h"
#include "protocols/Protocol.h"
#include "tests/support/client_window.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_presenter.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using support::ClientWindow;
using support::control;
using tarnel::DialogView;

/// A machine without a line.
class Machine final : public _CMMProtocol {
  public:
    int Connect() override { return 0; }

    int Disconnect() override { return 0; }

    int IsConnected() override { return 0; }

    CString GetInfoString() override { return ""; }

    int EditProtocolParameters() override { return 0; }

    LONG GetProbeID() const override { return probe; }

    void measure(int number) {
        m_LastPoint.number = number;
        SendMessageToClient(MEASURED_POINT);
    }

    LONG probe = -3;
};

/// Runs on another thread, as a machine's points come; the calling thread is busy meanwhile.
void elsewhere(std::function<void()> work) {
    const support::Worker worker([&work] {
        work();
        return DWORD(0);
    });
}

TEST(Point, IsEqualWithinATolerance) {
    const __PointMMT point(7, 1, 2, 3, 4, 5, 6);
    EXPECT_EQ(point.number, 7);
    for (double __PointMMT::*const coordinate :
         {&__PointMMT::x, &__PointMMT::y, &__PointMMT::z, &__PointMMT::x2, &__PointMMT::y2,
          &__PointMMT::z2}) {
        for (const double way : {1.0, -1.0}) {
            __PointMMT other = point;
            other.*coordinate += way * 0.009;
            EXPECT_EQ(point == other, 1);
            other.*coordinate += way * 0.002;
            EXPECT_EQ(point != other, 1);
        }
    }
    __PointMMT scaled(8, 0.5, 1, 1.5, 2, 2.5, 3);
    scaled.Scale(2);
    EXPECT_EQ(scaled == point, 0);
    scaled.number = 7;
    EXPECT_EQ(scaled == point, 1);
}

TEST(Notification, AnnouncesAPointWhenTheOneBeforeIsAcknowledged) {
    ClientWindow client;
    Machine machine;
    CWnd without_window;
    elsewhere([&] { machine.measure(1); });
    machine.Initialize(&without_window);
    elsewhere([&] { machine.measure(2); });
    EXPECT_EQ(machine.m_bPointAcknowledged, 1) << "nobody was told";
    machine.Initialize(&client);
    elsewhere([&] {
        for (const int number : {3, 4}) {
            machine.measure(number);
            machine.SendMessageToClient(_CMMProtocol::TYPE(7 - number));
            machine.SendMessageToClient(_CMMProtocol::TYPE(-number));
        }
    });
    EXPECT_EQ(client.told(), "point 2, point 4, point -3, point 3, point -4");
    EXPECT_EQ(machine.m_LastPoint.number, 4);
    EXPECT_EQ(machine.m_bPointAcknowledged, 0);
    machine.AcknowledgeLastPoint();
    EXPECT_EQ(client.told(), "");
    elsewhere([&] { machine.measure(5); });
    EXPECT_EQ(client.told(), "point 2");

    ClientWindow another;
    machine.Initialize(&another); // which has acknowledged nothing
    while (another.PostMessage(WM_NULL)) {
    }
    elsewhere([&] { machine.measure(6); });
    EXPECT_EQ(another.told(), "") << "its queue was full";
    elsewhere([&] { machine.measure(7); });
    EXPECT_EQ(another.told(), "point 2");
}

TEST(Notification, KeepsOneTrackingPointPending) {
    ClientWindow client, bystander;
    Machine machine;
    machine.Initialize(&client);
    elsewhere([&] {
        machine.measure(1);
        bystander.PostMessage(RegisterWindowMessageA("CMMProtocolTrackPoint"), 9);
        for (int i = 0; i < 3; ++i) {
            client.PostMessage(WM_USER, WPARAM(i));
            machine.SendMessageToClient(_CMMProtocol::TRACK_POINT);
        }
        client.PostMessage(WM_USER, 3);
    });
    EXPECT_EQ(client.told(), "point 2, other 0, other 1, other 2, track 1, other 3");
    EXPECT_EQ(bystander.told(), "track 9");
    EXPECT_EQ(machine.m_bPointAcknowledged, 0);
}

TEST(Notification, LocksContextMenusBeforeItGoesOn) {
    ClientWindow client;
    Machine machine;
    machine.Initialize(&client);
    std::string told; // the worker reads it between the sent messages, nobody else meanwhile
    std::atomic<bool> done = false;
    const support::Worker worker([&] {
        {
            const _CMMProtocol::ContextMenuLocker outer(&machine);
            EXPECT_EQ(machine.WantsContextMenuLocked(), 1);
            { const _CMMProtocol::ContextMenuLocker inner(&machine); }
            EXPECT_EQ(machine.WantsContextMenuLocked(), 0) << "guards do not count";
            client.PostMessage(WM_USER, 1);
            SendMessageA(client.GetSafeHwnd(), WM_USER, 2, 0);
        }
        done = true;
        return DWORD(0);
    });
    // Sent messages are run before posted ones, in any retrieval.
    MSG message;
    while (!done) {
        PeekMessageA(&message, client.m_hWnd, WM_APP, WM_APP, PM_NOREMOVE);
    }
    EXPECT_EQ(client.told(), "modeless 0, modeless 0, modeless 1, other 2, modeless 1, other 1");
}

TEST(Probe, DefaultsLeaveAloneWhatTheyDoNotKnow) {
    Machine machine;
    short a = 11, id = 12;
    double diameter = 13, b = 14;
    machine.GetProbeInfo(a, id, diameter, b);
    EXPECT_EQ(id, -3);
    EXPECT_EQ(diameter, 0.0);
    EXPECT_EQ(a, 11);
    EXPECT_EQ(b, 14.0);
    machine.probe = 0x12345;
    machine.GetProbeInfo(a, id, diameter, b);
    EXPECT_EQ(id, 0x2345);

    machine.m_ProbeAngleA = 30;
    machine.m_ProbeAngleB = 60;
    EXPECT_EQ(machine.GetCurrentProbeAngles(&diameter, &b), 1);
    EXPECT_EQ(diameter, 30.0);
    EXPECT_EQ(b, 60.0);

    EXPECT_EQ(machine.SetAutoRepeatTick(250), 0);
    EXPECT_EQ(machine.SetAutoRepeatTick(100), 250);
    EXPECT_EQ(machine.IsSecondPointProvided(), 1);
    EXPECT_EQ(machine.RepositioningAllowed(), 1);
    EXPECT_EQ(machine.RapidMoveTo(1, 2, 3), 0);

    struct : CCmdUI {
        void Enable(BOOL on) override { enabled = on; }

        BOOL enabled = TRUE;
    } command;

    machine.OnUpdateSpecialFunction(&command);
    EXPECT_FALSE(command.enabled);
}

TEST(ProbeSelection, TellsWhichProbeToTakeInTheUsersLanguage) {
    support::ScriptedPresenter screen;
    support::Environment environment;
    Machine machine;
    for (const auto& [language, text] :
         {std::pair{"de", "Bitte wählen Sie den Taster 5."}, {"en", "Please select probe 5."}}) {
        environment.speak(language);
        screen.next_dialog([](const DialogView& dialog) {
            EXPECT_EQ(control(dialog, 211).text, "1") << "whatever is selected now";
            tarnel::user_types(control(dialog, 211).window, "5");
            tarnel::user_presses(dialog.window, VK_RETURN);
        });
        EXPECT_EQ(machine.OpenProbeDialogBox(), 1);
        ASSERT_FALSE(screen.asked().empty());
        EXPECT_EQ(screen.asked().back().text, text);
        EXPECT_EQ(screen.asked().back().type, MB_OK | MB_ICONINFORMATION);
    }
}

TEST(ProbeSelection, ChangesNothingWhenItIsCancelled) {
    support::ScriptedPresenter screen;
    Machine machine;
    screen.next_dialog(
        [](const DialogView& dialog) { tarnel::user_presses(dialog.window, VK_ESCAPE); });
    LONG id = 12;
    EXPECT_EQ(machine.OpenProbeSelectionDialogBox(id), 0);
    EXPECT_EQ(id, 12);
    screen.set_ready(false);
    EXPECT_EQ(machine.OpenProbeDialogBox(), 0) << "there is nobody to ask";
    EXPECT_TRUE(screen.asked().empty());
}

} // namespace
