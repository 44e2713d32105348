#include "desktop/EncoderDialog.h"
#include "platform/windows/control_messages.h"
#include "tests/support/environment.h"
#include "tests/support/eventually.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using support::control;
using support::dispatch_until;
using tarnel::DialogView;

/// An application's dialog: writes down what it is told, and does what the test wants then.
class Arm : public CEncoderInitDlg {
  public:
    ~Arm() override {
        if (gone) {
            *gone = true;
        }
    }

    using CEncoderInitDlg::OnButtonDoAllClick;

    std::vector<std::string> told;
    std::function<void(const std::string& event)> react = [](const std::string&) {};
    bool deletes_itself = false;
    bool* gone = nullptr;

  protected:
    void OnInitDone(LONG encoder) override { tell("init " + std::to_string(encoder)); }

    void OnAllDone() override { tell("all"); }

    void OnCancelled() override { tell("cancelled"); }

    void PostNcDestroy() override {
        if (deletes_itself) {
            delete this;
        }
    }

  private:
    void tell(const std::string& event) {
        told.push_back(event);
        const auto reaction = react; // it may delete this
        reaction(event);
    }
};

using Told = std::vector<std::string>;

class EncoderDialog : public testing::Test {
  protected:
    EncoderDialog() {
        environment_.speak("en");
        arm = std::make_unique<Arm>();
    }

    /// The dialog as it is shown, once everything has been.
    DialogView shown() {
        bool flushed = false;
        dispatch_until([&flushed] { return std::exchange(flushed, true); });
        return screen.shown(arm->m_hWnd);
    }

    void create(int count, int user_controlled = 0, int show_set_home = 0) {
        EXPECT_EQ(arm->SetEncoderCount(count), 1);
        arm->SetUserControlled(user_controlled);
        arm->set_show_set_home(show_set_home);
        ASSERT_TRUE(arm->Create(nullptr));
    }

    void click(UINT id) { tarnel::user_clicks(control(shown(), id).window); }

    int position(int encoder) {
        return static_cast<int>(arm->GetDlgItem(1001 + encoder)->SendMessage(PBM_GETPOS));
    }

    support::ScriptedPresenter screen;
    std::unique_ptr<Arm> arm;

  private:
    support::Environment environment_;
};

TEST_F(EncoderDialog, FitsItsHeightToTheRows) {
    constexpr int template_height = 426; // 262 dialog units
    for (int count = 1; count <= 8; ++count) {
        create(count, count % 2, count % 3 == 0);
        const DialogView dialog = shown();
        for (UINT row = 0; row < 8; ++row) {
            EXPECT_EQ(control(dialog, 1001 + row).visible, row < UINT(count));
            EXPECT_EQ(control(dialog, 1011 + row).visible, row < UINT(count));
            EXPECT_EQ(control(dialog, 1021 + row).visible, row < UINT(count) && count % 2);
        }
        RECT whole{};
        RECT last{};
        arm->GetWindowRect(&whole);
        arm->GetDlgItem(1000 + count)->GetWindowRect(&last);
        EXPECT_EQ(whole.bottom, last.bottom + 80) << count;
        EXPECT_EQ(dialog.width, 336);

        const int shift = dialog.height - template_height;
        for (const UINT id : {UINT(IDCANCEL), 1030U, 1031U}) {
            EXPECT_EQ(control(dialog, id).rectangle.top, 395 + shift);
            EXPECT_EQ(control(dialog, id).rectangle.bottom, 418 + shift);
        }
        EXPECT_EQ(control(dialog, 1000).rectangle, (RECT{11, 55, 326, 377 + shift}));
        EXPECT_EQ(control(dialog, 1001).rectangle, (RECT{60, 102, 288, 126}));
        EXPECT_EQ(control(dialog, 1030).visible, count % 2 != 0);
        EXPECT_EQ(control(dialog, 1031).visible, count % 3 == 0);
        arm->DestroyWindow();
    }
    EXPECT_EQ(arm->SetEncoderCount(0), 0);
    EXPECT_EQ(arm->SetEncoderCount(9), 0);
    EXPECT_EQ(arm->GetEncoderCount(), 8);
}

TEST_F(EncoderDialog, ControlsKeepToTheEdgesWhenItIsMadeLarger) {
    create(8, 1, 1);
    const DialogView before = shown();
    RECT window{};
    arm->GetWindowRect(&window);
    arm->MoveWindow(window.left, window.top, window.right - window.left + 30,
                    window.bottom - window.top + 20);
    const DialogView after = shown();
    const auto change = [&](UINT id) {
        const RECT& a = control(before, id).rectangle;
        const RECT& b = control(after, id).rectangle;
        return RECT{b.left - a.left, b.top - a.top, b.right - a.right, b.bottom - a.bottom};
    };
    const std::pair<UINT, RECT> changes[] = {{IDCANCEL, {30, 20, 30, 20}}, {1000, {0, 0, 30, 20}},
                                             {1030, {0, 20, 0, 20}},       {1031, {0, 20, 30, 20}},
                                             {1019, {0, 0, 30, 0}},        {1008, {0, 0, 30, 0}},
                                             {1018, {0, 0, 0, 0}}};
    for (const auto& [id, by] : changes) {
        EXPECT_EQ(change(id), by) << id;
    }
}

TEST_F(EncoderDialog, NamesReplaceTheNumbersAsFarAsTheyGo) {
    const auto labels = [this](const char* names) {
        arm->SetEncoderNames(names);
        create(6);
        std::string texts;
        const DialogView dialog = shown();
        for (UINT row = 0; row < 8; ++row) {
            EXPECT_EQ(control(dialog, 1011 + row).text, control(dialog, 1021 + row).text);
            texts += control(dialog, 1011 + row).text + "|";
        }
        arm->DestroyWindow();
        return texts;
    };
    EXPECT_EQ(labels(""), "1|2|3|4|5|6|7|8|");
    EXPECT_EQ(labels("Base;Shoulder"), "Base|Shoulder|3|4|5|6|7|8|");
    EXPECT_EQ(labels(";B;"), "|B|3|4|5|6|7|8|");
    EXPECT_EQ(labels("a;b;c;d;e;f;g;h;i;j"), "a|b|c|d|e|f|g|h|");

    arm->SetTitle("Arm 7");
    arm->SetPrompt("Turn.");
    create(6);
    EXPECT_EQ(shown().caption, "Arm 7");
    EXPECT_EQ(control(shown(), 1019).text, "Turn.");
    EXPECT_EQ(control(shown(), 1020).text, "Encoders:") << "an empty text leaves the template's";
}

TEST_F(EncoderDialog, TellsOfEachEncoderOnceAndOfTheLast) {
    create(3);
    arm->react = [this](const std::string& event) {
        if (event == "init 2") {
            EXPECT_EQ(position(2), 25);
            EXPECT_FALSE(arm->GetDlgItem(1021)->IsWindowEnabled());
        }
    };
    arm->SetInitDone(2, 1);
    EXPECT_EQ(position(2), 100);
    EXPECT_TRUE(arm->GetDlgItem(1021)->IsWindowEnabled());
    arm->SetInitDone(2, 1);
    arm->SetInitDone(0, 1);
    EXPECT_EQ(arm->told, (Told{"init 2", "init 0"}));
    EXPECT_EQ(arm->GetAllDone(), 0);

    arm->OnButtonDoAllClick();
    EXPECT_EQ(arm->told, (Told{"init 2", "init 0", "init 1", "all"}));
    EXPECT_EQ(arm->GetAllDone(), 1);

    arm->SetInitDone(2, 0);
    EXPECT_EQ(arm->GetInitDone(2), 0);
    EXPECT_EQ(position(2), 100);
    arm->told.clear();
    arm->set_home_init(0);
    EXPECT_EQ(arm->GetInitDone(0), 0);
    arm->set_home_init(1);
    EXPECT_EQ(arm->told, (Told{"init -1", "all"}));
    arm->Reset();
    EXPECT_EQ(arm->GetInitDone(0) + arm->GetInitDone(1) + arm->GetAllDone(), 0);
    EXPECT_EQ(position(0), 100);
}

TEST_F(EncoderDialog, WaitsWhileTheApplicationReferencesAndTakesMessages) {
    create(2, 1);
    std::thread machine;
    std::atomic<bool> cancelled = false;
    arm->react = [&](const std::string& event) {
        cancelled = cancelled || event == "cancelled";
        if (event.starts_with("init")) {
            arm->set_referencing(1);
            arm->PostMessage(WM_CLOSE); // dispatched during the wait
            machine = std::thread([&] {
                support::eventually([&] { return cancelled.load(); });
                arm->set_referencing(0);
            });
        }
    };
    click(1021);
    EXPECT_EQ(arm->told, (Told{"init 0", "cancelled"}));
    EXPECT_EQ(position(0), 100);
    EXPECT_FALSE(arm->IsWindowVisible());
    machine.join();
}

TEST_F(EncoderDialog, EndsAReferencingWaitThatTheApplicationsEndBreaksOff) {
    create(2, 1);
    arm->react = [&](const std::string&) {
        arm->set_referencing(1);
        PostQuitMessage(7);
    };
    arm->SetInitDone(0, 1);
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    EXPECT_EQ(message.wParam, 7);
    EXPECT_EQ(arm->told, Told{"init 0"});
}

TEST_F(EncoderDialog, MayBeDestroyedFromWithinEveryNotification) {
    const std::pair<std::string, UINT> cases[] = {{"init 0", 1021},  {"init 1", 1030},
                                                  {"init -1", 1031}, {"all", 1031},
                                                  {"all", 1030},     {"cancelled", IDCANCEL}};
    for (const auto& [event, button] : cases) {
        arm.reset();
        arm = std::make_unique<Arm>();
        create(2, 1, 1);
        bool gone = false;
        Arm* const dialog = arm.get();
        dialog->gone = &gone;
        dialog->deletes_itself = true;
        dialog->react = [dialog, last = event](const std::string& now) {
            if (now == last) {
                dialog->DestroyWindow();
            }
        };
        const HWND clicked = control(shown(), button).window;
        arm.release(); // its own now
        tarnel::user_clicks(clicked);
        EXPECT_TRUE(gone) << event;
    }
}

TEST_F(EncoderDialog, MayBeDestroyedWhileItWaits) {
    for (const bool with_object : {false, true}) {
        arm.reset();
        arm = std::make_unique<Arm>();
        create(2, 1);
        bool gone = false;
        Arm* const dialog = with_object ? arm.release() : arm.get();
        dialog->gone = &gone;
        dialog->deletes_itself = with_object;
        dialog->react = [dialog](const std::string& event) {
            dialog->set_referencing(1);
            if (event == "cancelled") {
                dialog->DestroyWindow();
            } else {
                dialog->PostMessage(WM_CLOSE);
            }
        };
        dialog->SetInitDone(1, 1);
        EXPECT_EQ(gone, with_object);
        if (!with_object) {
            EXPECT_EQ(arm->told, (Told{"init 1", "cancelled"}));
            arm->react = [](const std::string&) {};
            arm->set_referencing(0);
            arm->SetInitDone(0, 1); // without a window it counts all the same
            EXPECT_EQ(arm->GetAllDone(), 1);
            arm.reset();
        }
    }
}

} // namespace
