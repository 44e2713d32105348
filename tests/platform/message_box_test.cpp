#include "platform/base/window_styles.h"
#include "platform/messages/message.h"
#include "platform/registry/application.h"
#include "platform/windows/message_box.h"
#include "platform/windows/wnd.h"
#include "tests/support/message_window.h"
#include "tests/support/reports.h"
#include "tests/support/scripted_presenter.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace {

using support::ScriptedPresenter;
using support::Worker;
using tarnel::MessageBoxView;
using tarnel::user_answers;
using tarnel::user_closes;

/// A window of the room, such as an application's own.
struct Frame : CWnd {
    explicit Frame(CWnd* parent = nullptr) {
        CreateEx(0, "Static", "", (parent ? WS_CHILD : WS_POPUP) | WS_VISIBLE, {0, 0, 9, 9}, parent,
                 0);
    }

    ~Frame() override { DestroyWindow(); }
};

TEST(MessageBox, IsAnsweredByItsOwnButtonsAloneOrClosed) {
    const struct {
        UINT type;
        std::vector<int> buttons;
        int closed; ///< what closing answers; 0: nothing
    } types[] = {
        {MB_OK, {IDOK}, IDOK},
        {MB_OKCANCEL, {IDOK, IDCANCEL}, IDCANCEL},
        {MB_ABORTRETRYIGNORE, {IDABORT, IDRETRY, IDIGNORE}, 0},
        {MB_YESNOCANCEL, {IDYES, IDNO, IDCANCEL}, IDCANCEL},
        {MB_YESNO, {IDYES, IDNO}, 0},
        {MB_RETRYCANCEL, {IDRETRY, IDCANCEL}, IDCANCEL},
    };

    ScriptedPresenter screen;
    for (const auto& row : types) {
        for (int button : row.buttons) {
            screen.next_answer([&, button](const MessageBoxView& box) {
                for (int foreign :
                     {0, IDOK, IDCANCEL, IDABORT, IDRETRY, IDIGNORE, IDYES, IDNO, 9}) {
                    if (std::ranges::count(row.buttons, foreign) == 0) {
                        user_answers(box.window, foreign);
                    }
                }
                user_answers(box.window, button);
                user_answers(box.window, row.buttons.front()); // too late
            });
            EXPECT_EQ(MessageBoxA(nullptr, "?", "", row.type | MB_ICONQUESTION), button);
        }
        screen.next_answer([&](const MessageBoxView& box) {
            user_closes(box.window);
            user_answers(box.window, row.buttons[row.closed == IDOK ? 0 : 1]);
        });
        EXPECT_EQ(MessageBoxA(nullptr, "?", "", row.type),
                  row.closed ? row.closed : row.buttons[1]);
    }
}

TEST(MessageBox, DisablesItsOwnerWhileMessagesFlow) {
    ScriptedPresenter screen;
    Frame frame;
    Frame inside(&frame);
    bool posted_ran = false;
    const support::MessageWindow other([&](UINT message, WPARAM, LPARAM) {
        posted_ran = posted_ran || message == WM_USER;
        return 0;
    });
    PostMessageA(other.handle, WM_USER, 0, 0);
    HWND outer = nullptr;
    screen.next_answer([&](const MessageBoxView& box) {
        EXPECT_TRUE(posted_ran);
        EXPECT_FALSE(frame.IsWindowEnabled());
        outer = box.window;
        EXPECT_EQ(box.owner, frame.m_hWnd); // a child stands for the window that it is in
        screen.next_answer([&](const MessageBoxView& inner) {
            EXPECT_EQ(inner.owner, outer);
            user_answers(outer, IDCANCEL); // covered by the other one
            user_answers(inner.window, IDOK);
        });
        EXPECT_EQ(MessageBoxA(nullptr, "again", "", MB_OK), IDOK);
        EXPECT_FALSE(frame.IsWindowEnabled());
        user_answers(outer, IDOK);
    });
    EXPECT_EQ(MessageBoxA(inside.m_hWnd, "Zeile\n&Zwei", "Frage", MB_OKCANCEL | MB_ICONERROR),
              IDOK);
    EXPECT_TRUE(frame.IsWindowEnabled());
    EXPECT_FALSE(IsWindow(outer) || screen.is_open(outer));
    const MessageBoxView box = screen.asked().at(0);
    EXPECT_EQ(box.text + box.caption, "Zeile\n&ZweiFrage");
    EXPECT_EQ(box.type, MB_OKCANCEL | MB_ICONERROR);

    frame.EnableWindow(FALSE); // and stays so
    EXPECT_EQ(MessageBoxA(frame.m_hWnd, "", "", MB_OK), IDOK);
    EXPECT_FALSE(frame.IsWindowEnabled());
}

TEST(MessageBox, IsReportedWhenNobodySeesIt) {
    const support::Reports reports;
    EXPECT_EQ(MessageBoxA(nullptr, "no\r\nscreen", "Caption", MB_OKCANCEL), 0);
    ScriptedPresenter screen;
    screen.set_ready(false);
    EXPECT_EQ(MessageBoxA(nullptr, "not ready", nullptr, MB_OK), 0);
    screen.set_ready(true);
    EXPECT_EQ(MessageBoxA(nullptr, "no such type", "", 6), 0);

    const auto lines = reports.lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_NE(lines[0].find("Caption: no  screen"), std::string::npos);
    EXPECT_NE(lines[1].find("not ready"), std::string::npos);
    EXPECT_TRUE(screen.asked().empty());
}

TEST(MessageBox, GivesNothingWhenBrokenOff) {
    ScriptedPresenter screen;
    auto frame = std::make_unique<Frame>();
    screen.next_answer([&](const MessageBoxView&) { frame.reset(); });
    EXPECT_EQ(MessageBoxA(frame->m_hWnd, "?", "", MB_YESNO), 0);

    screen.next_answer([](const MessageBoxView&) { PostQuitMessage(7); });
    EXPECT_EQ(MessageBoxA(nullptr, "?", "", MB_YESNO), 0);
    MSG message{};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
    }
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_EQ(message.wParam, 7U);

    struct Fault {};

    screen.next_answer([](const MessageBoxView&) { throw Fault(); });
    EXPECT_THROW(MessageBoxA(nullptr, "?", "", MB_YESNO), Fault);
    for (const MessageBoxView& box : screen.asked()) {
        EXPECT_FALSE(IsWindow(box.window) || screen.is_open(box.window));
    }
}

TEST(MessageBox, BelongsToItsThreadAndWakesForWhatOthersSend) {
    ScriptedPresenter screen;
    std::atomic<HWND> boxes[2] = {nullptr, nullptr};
    const auto ask = [&](std::size_t index) {
        // Posted behind the question, it runs when nothing else will wake the thread.
        screen.next_answer([&, index](const MessageBoxView& box) { boxes[index] = box.window; });
        return static_cast<DWORD>(MessageBoxA(nullptr, "?", "", MB_YESNO));
    };
    DWORD answers[2] = {0, 0};
    {
        const Worker first([&] { return answers[0] = ask(0); });
        const Worker second([&] { return answers[1] = ask(1); });
        EXPECT_TRUE(support::dispatch_until([&] { return boxes[0] && boxes[1]; }));
        user_answers(boxes[0], IDNO); // of another thread: nothing
        SendMessageA(boxes[0], WM_COMMAND, IDYES, 0);
        SendMessageA(boxes[1], WM_COMMAND, IDNO, 0);
    }
    EXPECT_EQ(answers[0] + answers[1], static_cast<DWORD>(IDYES + IDNO));
    EXPECT_NE(answers[0], answers[1]);
}

TEST(MessageBox, SpeaksInTheNameOfTheApplication) {
    ScriptedPresenter screen;
    AfxMessageBox("a", MB_OKCANCEL);
    AfxMessageBox("b", MB_ICONERROR);
    {
        CWinApp application;
        application.m_pszProfileName = "Coordinates";
        AfxMessageBox("c");
    }
    const auto asked = screen.asked();
    ASSERT_EQ(asked.size(), 3U);
    EXPECT_EQ(asked[0].caption, "windows-test");
    EXPECT_EQ(asked[0].type, MB_OKCANCEL | MB_ICONEXCLAMATION);
    EXPECT_EQ(asked[1].type, MB_ICONERROR);
    EXPECT_EQ(asked[2].caption, "Coordinates");
}

} // namespace
