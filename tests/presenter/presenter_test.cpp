#include "platform/threads/clock.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/dialog.h"
#include "platform/windows/dialog_picture.h"
#include "platform/windows/message_box.h"
#include "platform/windows/presenter_messages.h"
#include "tests/support/eventually.h"
#include "tests/support/reports.h"
#include "tests/support/resource_library.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>

namespace {

using support::eventually;
using support::xdotool;

constexpr const char* script = R"(
100 DIALOGEX 0, 0, 160, 100
STYLE WS_POPUP | WS_CAPTION | WS_SYSMENU
CAPTION "Trial"
BEGIN
    GROUPBOX "&Group", -1, 4, 4, 152, 68
    LTEXT "&Name", -1, 10, 16, 30, 8
    EDITTEXT 101, 60, 14, 60, 12
    LTEXT "&List", -1, 10, 32, 30, 8
    COMBOBOX 102, 60, 30, 60, 60, CBS_DROPDOWNLIST | WS_VSCROLL
    AUTOCHECKBOX "&Check", 103, 60, 46, 60, 10
    EDITTEXT 104, 60, 58, 40, 12
    CONTROL "", 105, "msctls_updown32",
            UDS_AUTOBUDDY | UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS, 100, 58, 11, 12
    PUSHBUTTON "&More", 106, 4, 80, 40, 14
    DEFPUSHBUTTON "OK", IDOK, 60, 80, 40, 14
    PUSHBUTTON "Cancel", IDCANCEL, 110, 80, 40, 14
END
200 DIALOG 0, 0, 60, 40
STYLE WS_POPUP | WS_CAPTION | WS_SYSMENU
CAPTION "Measured"
BEGIN
    LTEXT "Two lines of text that stand in their label", 1, 0, 0, 60, 30
    PUSHBUTTON "This does not fit", 2, 0, 30, 20, 10
    LTEXT "Nor do these three lines", 3, 20, 30, 30, 10
END
)";

/// Notes what is in it when it is confirmed, and does what the test wants at a click of "More".
class Trial : public CDialog {
  public:
    explicit Trial(CWnd* parent = nullptr) : CDialog(100, parent) {}

    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        seen = seen || message == WM_PAINT;
        const bool clicked = message == WM_COMMAND && HIWORD(wparam) == BN_CLICKED;
        if (clicked && LOWORD(wparam) == 106) {
            more();
        }
        if (message == WM_COMMAND && HIWORD(wparam) == EN_CHANGE) {
            Sleep(slowness);
        }
        if (clicked && LOWORD(wparam) == 103) {
            checked = true;
        }
        return CDialog::WindowProc(message, wparam, lparam);
    }

    BOOL OnInitDialog() override {
        handle = m_hWnd;
        for (const char* entry : {"one", "two", "three"}) {
            tell(102, CB_ADDSTRING, entry);
        }
        GetDlgItem(105)->SendMessage(UDM_SETRANGE32, 0, 20);
        GetDlgItem(105)->SendMessage(UDM_SETPOS32, 0, 7);
        return TRUE;
    }

    void tell(int control, UINT message, const char* text) const {
        GetDlgItem(control)->SendMessage(message, 0, reinterpret_cast<LPARAM>(text));
    }

    std::string text(int control) const {
        CString text;
        GetDlgItem(control)->GetWindowText(text);
        return static_cast<LPCSTR>(text);
    }

    void OnOK() override {
        outcome = text(101) + '|' + text(102) + '|' + text(104) + '|' +
                  std::to_string(GetDlgItem(103)->SendMessage(BM_GETCHECK));
        CDialog::OnOK();
    }

    void OnCancel() override {
        if (closes) {
            CDialog::OnCancel();
        }
    }

    std::function<void()> more = [] {};
    std::atomic<HWND> handle = nullptr;
    std::atomic<bool> seen = false;
    std::atomic<bool> checked = false;
    bool closes = true;
    DWORD slowness = 0; ///< ms for each change of a text
    std::string outcome;
};

using Acts = std::function<void(const std::string& window)>;

/// Runs the dialog while a person acts on it, given its number on the screen.
INT_PTR run(Trial& dialog, const Acts& act) {
    std::atomic<bool> over = false;
    std::thread person([&] {
        act(support::window_titled("Trial"));
        if (!eventually([&] { return over.load(); })) {
            ADD_FAILURE() << "the dialog is still open";
            PostMessageA(dialog.handle, WM_COMMAND, IDOK, 0);
        }
    });
    const INT_PTR result = dialog.DoModal();
    over = true;
    person.join();
    return result;
}

void keys(const std::string& all) {
    xdotool("key " + all);
}

void click(const std::string& window, int x, int y) {
    xdotool("mousemove --window " + window + ' ' + std::to_string(x * 6 / 4) + ' ' +
            std::to_string(y * 13 / 8) + " click 1");
}

/// The process that shows the window.
pid_t presenter_of(const std::string& window) {
    const pid_t process = std::atoi(xdotool("getwindowpid " + window).c_str());
    if (process <= 0) { // as an address of signals, the test itself
        throw std::runtime_error("window " + window + " has gone");
    }
    return process;
}

class OnScreen : public testing::Test {
  protected:
    support::ResourceLibrary library{script};
    support::Reports reports;
    support::XServer server;
    Trial dialog;
};

TEST_F(OnScreen, TheKeyboardAloneIsEnough) {
    const INT_PTR result = run(dialog, [&](const std::string&) {
        xdotool("type abc");
        keys("Left Left X");            // in the middle, and on from there
        keys("Y Tab Down Down Up Tab"); // tab order: the list, the check box
        keys("alt+l t Down");           // by the label's mnemonic, and choosing by a letter
        keys("alt+c");
        EXPECT_TRUE(eventually([&] { return dialog.checked.load(); }));
        keys("Tab Up Up Up Down"); // arrows at the number
        keys("alt+n End Z alt+g End W Return");
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(dialog.outcome, "aXYbcZW|three|9|1");
}

TEST_F(OnScreen, WhoTypesFasterThanTheApplicationReadsLosesNothing) {
    dialog.slowness = 20;
    const INT_PTR result = run(dialog, [&](const std::string&) {
        xdotool("type --delay 15 abcdefghijklmnopqrst");
        keys("Return");
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(dialog.outcome, "abcdefghijklmnopqrst||7|0");
}

TEST_F(OnScreen, TheMouseAloneIsEnough) {
    const INT_PTR result = run(dialog, [&](const std::string& window) {
        const auto windows = [] { return xdotool("search --onlyvisible --class tarnel").size(); };
        const auto before = windows();
        click(window, 90, 36);
        EXPECT_TRUE(eventually([&] { return windows() > before; })) << "the list does not open";
        click(window, 90, 47);
        EXPECT_TRUE(eventually([&] { return windows() == before; }));
        click(window, 65, 51);
        click(window, 96, 61); // the upper arrow
        click(window, 96, 61);
        click(window, 96, 67);
        click(window, 80, 87);
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(dialog.outcome, "|two|8|1");
}

TEST_F(OnScreen, KeysAndTheFrameEndDialogs) {
    for (const auto& [key, result] :
         {std::pair("Escape", IDCANCEL), {"alt+F4", IDCANCEL}, {"Return", IDOK}}) {
        EXPECT_EQ(run(dialog, [key = key](const std::string&) { keys(key); }), result) << key;
    }
}

TEST_F(OnScreen, ChangesAreShownAtOnce) {
    dialog.more = [&] {
        dialog.GetDlgItem(101)->ShowWindow(SW_HIDE);
        dialog.GetDlgItem(IDOK)->EnableWindow(FALSE);
        dialog.MoveWindow(0, 0, 300, 400);
    };
    run(dialog, [&](const std::string& window) {
        keys("alt+m");
        EXPECT_TRUE(eventually([&] {
            return xdotool("getwindowgeometry " + window).find("x3") != std::string::npos;
        })) << xdotool("getwindowgeometry " + window);
        keys("Return alt+c"); // the default button is disabled
        EXPECT_TRUE(eventually([&] { return dialog.checked.load(); }));
        keys("Escape");
    });
    EXPECT_EQ(dialog.outcome, "");
}

TEST_F(OnScreen, AMessageBoxIsAnsweredBeforeItsOwner) {
    int answer = 0;
    dialog.more = [&] { answer = MessageBoxA(dialog.m_hWnd, "Really?", "Question", MB_YESNO); };
    const INT_PTR result = run(dialog, [&](const std::string& window) {
        keys("alt+m");
        support::window_titled("Question");
        click(window, 80, 87); // the owner's OK
        keys("Escape alt+F4");
        support::window_titled("Question");
        keys("alt+n");
        support::window_titled("Trial");
        keys("Escape");
    });
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(result, IDCANCEL);
}

TEST_F(OnScreen, ADialogWhosePresenterEndsIsCancelled) {
    Trial inner(&dialog);

    struct Case {
        const char* what;
        bool closes;
        std::function<void()> more;
        const char* topmost;
    } const cases[] = {
        {"one that closes", true, [] {}, "Trial"},
        {"one that refuses", false, [] {}, "Trial"},
        {"one over another", true, [&] { EXPECT_EQ(inner.DoModal(), IDCANCEL); }, "Trial"},
        {"a question that has to be answered", true,
         [&] { EXPECT_EQ(MessageBoxA(dialog.m_hWnd, "Really?", "Question", MB_YESNO), 0); },
         "Question"},
    };

    for (const Case& now : cases) {
        dialog.closes = now.closes;
        dialog.more = now.more;
        inner.seen = false;
        const INT_PTR result = run(dialog, [&](const std::string& window) {
            keys("alt+m");
            if (now.what == cases[2].what) {
                EXPECT_TRUE(eventually([&] { return inner.seen.load(); }));
            }
            support::window_titled(now.topmost);
            ::kill(presenter_of(window), SIGKILL);
        });
        EXPECT_EQ(result, IDCANCEL) << now.what;
    }
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), 0) << "the test's own children alone";
}

TEST_F(OnScreen, APresenterThatStopsIsReplaced) {
    Trial next(&dialog);
    dialog.more = [&] { EXPECT_EQ(next.DoModal(), IDOK); };
    const INT_PTR result = run(dialog, [&](const std::string& window) {
        ::kill(presenter_of(window), SIGSTOP);
        PostMessageA(dialog.handle, WM_COMMAND, 106, 0);
        EXPECT_TRUE(eventually([&] { return next.seen.load(); }));
        keys("Return");
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(reports.lines().size(), 0U);
}

TEST_F(OnScreen, APresenterThatDoesNotReadIsGivenUp) {
    dialog.more = [&] {
        dialog.GetDlgItem(101)->SetWindowText(std::string(20'000, 'x').c_str());
        PostMessageA(dialog.handle, WM_COMMAND, 106, 0);
    };
    EXPECT_EQ(run(dialog,
                  [&](const std::string& window) {
                      ::kill(presenter_of(window), SIGSTOP);
                      PostMessageA(dialog.handle, WM_COMMAND, 106, 0);
                  }),
              IDCANCEL);
}

TEST_F(OnScreen, AServerThatEndsCancelsTheDialogAndLeavesTheApplication) {
    EXPECT_EQ(run(dialog, [&](const std::string&) { server.end(); }), IDCANCEL);
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(reports.count("no display"), 1U);
    support::XServer another;
    EXPECT_EQ(run(dialog, [&](const std::string&) { keys("Return"); }), IDOK);
}

TEST_F(OnScreen, ThreadsHaveDialogsOfTheirOwn) {
    std::thread other([this] {
        AfxSetResourceHandle(library.module);
        Trial second;
        EXPECT_EQ(second.DoModal(), IDOK);
    });
    const INT_PTR result = run(dialog, [&](const std::string&) {
        const auto both = [] { return xdotool("search --onlyvisible --name '^Trial$'"); };
        EXPECT_TRUE(eventually([&] { return both().find('\n') != std::string::npos; }));
        keys("Return");
        EXPECT_TRUE(eventually([&] { return both().find('\n') == std::string::npos; }));
        support::window_titled("Trial");
        keys("Return");
    });
    EXPECT_EQ(result, IDOK);
    other.join();
}

/// Not a test but what one runs as a process of its own.
TEST(Application, DISABLED_ShowsADialog) {
    support::ResourceLibrary library{script};
    Trial().DoModal();
}

TEST(Presenter, EndsWithItsApplication) {
    support::XServer server;
    const pid_t application = support::start_program(
        {"/proc/self/exe", "--gtest_filter=Application.*", "--gtest_also_run_disabled_tests"});
    const pid_t presenter = presenter_of(support::window_titled("Trial"));
    EXPECT_NE(::getpgid(presenter), ::getpgid(0)) << "a Ctrl+C would reach it";
    ::kill(application, SIGKILL);
    ::waitpid(application, nullptr, 0);
    EXPECT_TRUE(eventually([presenter] {
        return !std::filesystem::exists("/proc/" + std::to_string(presenter) + "/exe");
    }));
    EXPECT_TRUE(eventually([] { return xdotool("search --name '^Trial$'").empty(); }));
}

TEST(Presenter, ThatIsNotThereIsReportedOnce) {
    support::ResourceLibrary library{script};
    for (const auto& [variable, value, report] :
         {std::tuple("DISPLAY", std::optional<std::string>(":77777"), "no display"),
          {"TARNEL_PRESENTER", "", "missing"},
          {"DISPLAY", std::nullopt, "no display"},
          {"TARNEL_PRESENTER", "/bin/true", "does not answer"}}) {
        support::XServer server;
        support::Reports reports;
        support::Environment environment;
        environment.set(variable, value);
        EXPECT_TRUE(eventually([] { return Trial().DoModal() == -1; })) << report;
        EXPECT_EQ(MessageBoxA(nullptr, "said", "Someone", MB_OK), 0) << report;
        EXPECT_EQ(reports.count(report), 1U) << report;
        EXPECT_EQ(reports.count("Someone: said"), 1U) << report;
    }
}

/// Shows nothing, and keeps the dialog that it is to show. Once it is chosen, this process shows
/// nothing any more: the last of its kind.
class Nobody : public tarnel::Presenter {
  public:
    bool ready() override { return true; }

    bool open(const tarnel::DialogView& dialog) override {
        shown = dialog;
        return false;
    }

    void update(const tarnel::DialogView&) override {}

    bool ask(const tarnel::MessageBoxView&) override { return false; }

    void close(HWND) override {}

    tarnel::DialogView shown;
};

TEST(Pictures, NeedNoScreenAndTellWhichTextsDoNotFit) {
    support::ResourceLibrary library{script};
    support::Environment environment;
    environment.set("DISPLAY", std::nullopt);
    const auto nobody = std::make_shared<Nobody>();
    tarnel::set_presenter(nobody);
    EXPECT_EQ(CDialog(200).DoModal(), -1);
    const std::string file = std::filesystem::temp_directory_path() / "dialog-picture.png";
    EXPECT_TRUE(tarnel::draw_dialog(nobody->shown, file));
    std::string head(24, ' ');
    std::ifstream(file).read(head.data(), 24);
    EXPECT_EQ(head.substr(1, 3), "PNG");
    EXPECT_EQ(head.substr(16), std::string("\0\0\0\x5A\0\0\0\x41", 8)) << "90 x 65";
    std::filesystem::remove(file);
    EXPECT_FALSE(tarnel::draw_dialog(nobody->shown, "/no/such/folder/picture.png"));
    const auto clipped = tarnel::clipped_controls(nobody->shown);
    ASSERT_TRUE(clipped.has_value());
    EXPECT_EQ(*clipped, (std::vector<HWND>{nobody->shown.controls[1].window,
                                           nobody->shown.controls[2].window}));
    environment.set("TARNEL_PRESENTER", "/bin/false");
    EXPECT_FALSE(tarnel::draw_dialog(nobody->shown, file));
    EXPECT_FALSE(tarnel::clipped_controls(nobody->shown).has_value());
}

TEST(Line, TakesNothingButWholeActions) {
    const auto text_of = [](const std::string& line) {
        const auto action = tarnel::read_action(line);
        return action ? action->text : "damaged";
    };
    const auto action =
        tarnel::read_action(R"({"do":"step","n":7,"window":4503599627370497,"value":-2,"x":""})");
    ASSERT_TRUE(action);
    EXPECT_EQ(action->verb, "step");
    EXPECT_EQ(action->number, 7);
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(action->window), 4503599627370497);
    EXPECT_EQ(action->value, -2);
    for (const auto& [json, text] : {std::pair(R"("Zoë \"\\\/\n")", "Zoë \"\\/\n"),
                                     {R"("\u00eb\u20AC\ud83d\ude00")", "\u00eb\u20ac\U0001f600"},
                                     {R"("\ud83dx\ude00")", "\ufffdx\ufffd"}}) {
        EXPECT_EQ(text_of(std::string(R"({"text":)") + json + '}'), text) << json;
    }
    const std::string whole = R"({"do":"type","n":1,"window":5,"value":0,"text":"a\u00e4\n"})";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(text_of(whole.substr(0, length)), "damaged") << length;
    }
    for (const char* line : {"{}x", "[1]", R"({"n":1.5})", R"({"n":99999999999999999999})",
                             R"({"n":{}})", R"({"text":"\x"})", R"({"text":"\u12"})",
                             "{\"text\":\"\t\"}", R"({"n":1,})", R"( {"n":1})"}) {
        EXPECT_EQ(text_of(line), "damaged") << line;
    }
}

TEST(Line, CarriesAnyTextToThePresenter) {
    const auto sent = [](const std::string& text) {
        return tarnel::question_message({nullptr, nullptr, "", text, 0});
    };
    for (const auto& [text, json] :
         {std::pair(std::string("Zoë \"\\\n"), R"("Zoë \u0022\u005c\u000a")"),
          {std::string("a\xC3(\xFF\x7F\0b", 7), R"("a\ufffd(\ufffd\u007f\u0000b")"}}) {
        EXPECT_NE(sent(text).find(json), std::string::npos) << sent(text);
    }
}

} // namespace
