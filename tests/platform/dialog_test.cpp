#include "platform/base/exceptions.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/dialog.h"
#include "tests/support/process_facts.h"
#include "tests/support/reports.h"
#include "tests/support/resource_library.h"
#include "tests/support/scripted_presenter.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using support::control;
using tarnel::DialogView;

constexpr const char* script = R"(
100 DIALOGEX 0, 0, 100, 60
STYLE WS_POPUP | WS_CAPTION | WS_SYSMENU
CAPTION "Plain"
FONT 8, "MS Shell Dlg"
BEGIN
    LTEXT "&Text", -1, 0, 0, 20, 10
    EDITTEXT 101, 30, 0, 40, 12
    PUSHBUTTON "Other", 102, 0, 20, 40, 14
    PUSHBUTTON "Gone", 103, 0, 20, 40, 14, NOT WS_VISIBLE
    DEFPUSHBUTTON "OK", IDOK, 0, 40, 40, 14
    PUSHBUTTON "Cancel", IDCANCEL, 50, 40, 40, 14
END
200 DIALOG 10, 20, 50, 50
STYLE WS_POPUP | WS_CAPTION | WS_VISIBLE
BEGIN
END
)";

/// A dialog that writes down its messages, and does what the test wants at each.
class Plain : public CDialog {
  public:
    explicit Plain(CWnd* parent = nullptr, UINT id = 100) : CDialog(id, parent) {}

    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        seen.push_back(message);
        react(message, wparam);
        return CDialog::WindowProc(message, wparam, lparam);
    }

    std::vector<UINT> seen;
    std::function<void(UINT message, WPARAM wparam)> react = [](UINT, WPARAM) {};
};

class Dialogs : public testing::Test {
  protected:
    support::ResourceLibrary library{script};
    support::ScriptedPresenter screen;
};

void close(const DialogView& dialog) {
    tarnel::user_closes(dialog.window);
}

TEST_F(Dialogs, AreMadeInTheDocumentedOrder) {
    Plain dialog;
    bool controls_at_size = true;
    dialog.react = [&](UINT message, WPARAM) {
        if (message == WM_SIZE) {
            controls_at_size = dialog.GetDlgItem(IDOK) != nullptr;
        }
        if (message == WM_INITDIALOG) {
            EXPECT_NE(dialog.GetDlgItem(IDCANCEL), nullptr);
            EXPECT_FALSE(dialog.IsWindowVisible());
        }
    };
    screen.next_dialog(close);
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_FALSE(controls_at_size);
    dialog.seen.resize(8);
    EXPECT_EQ(dialog.seen, (std::vector<UINT>{WM_NCCREATE, WM_NCCALCSIZE, WM_CREATE, WM_SIZE,
                                              WM_MOVE, WM_SETFONT, WM_INITDIALOG, WM_SHOWWINDOW}));
    EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST_F(Dialogs, KeysMoveTheFocusAndPressButtons) {
    Plain dialog;
    std::vector<UINT> stops;
    const auto tab = [&](const DialogView& shown) {
        for (const tarnel::ControlView& each : shown.controls) {
            if (each.window == shown.focus) {
                stops.push_back(each.id);
            }
        }
        tarnel::user_presses(shown.window, VK_TAB);
    };
    std::vector<int> commands;
    dialog.react = [&](UINT message, WPARAM wparam) {
        if (message == WM_COMMAND && HIWORD(wparam) == BN_CLICKED) {
            commands.push_back(LOWORD(wparam));
        }
    };
    screen.next_dialog(tab, tab, [](const DialogView& shown) {
        EXPECT_EQ(shown.focus, control(shown, IDOK).window) << "hidden controls are passed over";
        EXPECT_EQ(shown.default_button, IDOK);
        SendMessageA(shown.window, WM_NEXTDLGCTL, 1, 0); // back
        tarnel::user_presses(shown.window, VK_RETURN);
        SendMessageA(shown.window, WM_NEXTDLGCTL, 1, 0);
        tarnel::user_presses(shown.window, VK_RETURN); // from the edit box
    });
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_EQ(stops, (std::vector<UINT>{101, 102}));
    EXPECT_EQ(commands, (std::vector<int>{102, IDOK}));
}

TEST_F(Dialogs, DisableTheirOwnerAndGiveItBack) {
    Plain owner(nullptr, 200);
    ASSERT_TRUE(owner.Create(200));
    Plain dialog(&owner);
    screen.next_dialog([&](const DialogView& shown) {
        EXPECT_EQ(shown.owner, owner.m_hWnd);
        EXPECT_FALSE(owner.IsWindowEnabled());
        tarnel::user_closes(owner.m_hWnd); // takes no input now
        Plain inner(&dialog);
        screen.next_dialog([&](const DialogView& nested) {
            EXPECT_FALSE(dialog.IsWindowEnabled());
            tarnel::user_closes(shown.window);
            tarnel::user_closes(nested.window);
        });
        EXPECT_EQ(inner.DoModal(), IDCANCEL);
        EXPECT_TRUE(dialog.IsWindowEnabled());
        EXPECT_FALSE(owner.IsWindowEnabled());
        tarnel::user_closes(shown.window);
    });
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_TRUE(owner.IsWindowEnabled());
    EXPECT_TRUE(owner.IsWindowVisible());

    Plain owned(&owner);
    ASSERT_TRUE(owned.Create(200, &owner));
    owner.DestroyWindow();
    EXPECT_EQ(owned.m_hWnd, nullptr) << "an owner takes what it owns along";
}

TEST_F(Dialogs, SayWhenTheyCannotBeRun) {
    EXPECT_EQ(Plain(nullptr, 999).DoModal(), -1);
    EXPECT_FALSE(Plain().Create(999));
    screen.set_ready(false);
    EXPECT_EQ(Plain().DoModal(), -1);
    EXPECT_FALSE(Plain().Create(200));
    screen.set_ready(true);

    const support::Reports reports;

    struct Broken : Plain {
        BOOL OnInitDialog() override { AfxThrowNotSupportedException(); }
    } broken;

    EXPECT_EQ(broken.DoModal(), IDABORT);
    EXPECT_EQ(broken.m_hWnd, nullptr);
    EXPECT_EQ(reports.lines().size(), 1);
}

TEST_F(Dialogs, EndWhateverEndsThem) {
    Plain dialog;
    screen.next_dialog([](const DialogView& shown) { DestroyWindow(shown.window); });
    EXPECT_EQ(dialog.DoModal(), IDABORT);

    screen.next_dialog([](const DialogView&) { PostQuitMessage(3); });
    EXPECT_EQ(dialog.DoModal(), IDABORT);
    MSG message{};
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 3);

    // Ended by a message from another thread, with nothing posted: the loop must see it.
    dialog.react = [&](UINT number, WPARAM) {
        if (number == WM_APP) {
            dialog.EndDialog(42);
        }
    };
    std::unique_ptr<support::Worker> worker;
    screen.next_dialog([&](const DialogView& shown) {
        worker = std::make_unique<support::Worker>([window = shown.window] {
            SendMessageA(window, WM_APP, 0, 0);
            return 0;
        });
    });
    EXPECT_EQ(dialog.DoModal(), 42);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE)) << "nothing is left over";
}

TEST_F(Dialogs, SurviveAnExceptionInAHandler) {
    Plain dialog;
    dialog.react = [](UINT message, WPARAM wparam) {
        if (message == WM_COMMAND && LOWORD(wparam) == 102) {
            AfxThrowNotSupportedException();
        }
    };
    screen.next_dialog(
        [](const DialogView& shown) { tarnel::user_clicks(control(shown, 102).window); }, close);
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    ASSERT_EQ(screen.asked().size(), 1);
    EXPECT_EQ(screen.asked()[0].text, "Command failed.");
    EXPECT_EQ(screen.asked()[0].owner, screen.dialogs()[0]);
}

TEST_F(Dialogs, LeaveNothingBehindWhenTheirThreadEnds) {
    Plain dialog;
    const auto before = support::process_facts();
    {
        const support::Worker worker([&] {
            AfxSetResourceHandle(library.module);
            EXPECT_TRUE(dialog.Create(200));
            return 0;
        });
    }
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    EXPECT_FALSE(screen.is_open(screen.dialogs()[0]));
    EXPECT_TRUE(support::back_to(before));
}

} // namespace
