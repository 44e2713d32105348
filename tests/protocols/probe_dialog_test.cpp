#include "platform/windows/control_messages.h"
#include "protocols/ProbeDialog.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

namespace {

using support::control;
using tarnel::DialogView;

constexpr UINT edit = 211;
constexpr UINT arrows = 221;

void type(const DialogView& dialog, const char* text) {
    tarnel::user_types(control(dialog, edit).window, text);
}

void click_ok(const DialogView& dialog) {
    tarnel::user_clicks(control(dialog, IDOK).window);
}

class ProbeDialog : public testing::Test {
  protected:
    ProbeDialog() { dialog_.m_nProbe = 1; }

    LONG answer() {
        EXPECT_EQ(dialog_.DoModal(), IDOK);
        return dialog_.m_nProbe;
    }

    support::ScriptedPresenter screen_;
    tbxProbeSelectionDlg dialog_{nullptr};
};

TEST_F(ProbeDialog, TheArrowsStepWithinTheProbes) {
    screen_.next_dialog(
        [](const DialogView& dialog) {
            EXPECT_EQ(dialog.caption, "Probe Selection");
            EXPECT_EQ(control(dialog, edit).text, "1");
            EXPECT_EQ(dialog.focus, control(dialog, edit).window);
            tarnel::user_presses(dialog.window, VK_DOWN);
        },
        [](const DialogView& dialog) {
            EXPECT_EQ(control(dialog, edit).text, "1");
            type(dialog, "32766");
            tarnel::user_presses(dialog.window, VK_UP);
            tarnel::user_steps(control(dialog, arrows).window, 1);
        },
        [](const DialogView& dialog) {
            EXPECT_EQ(control(dialog, edit).text, "32767");
            tarnel::user_presses(dialog.window, VK_RETURN);
        });
    EXPECT_EQ(answer(), 32767);
}

TEST_F(ProbeDialog, WhatIsTypedNeedOnlyBeANumber) {
    for (const auto& [text, value] : {std::pair{"0", 0}, {"-12", -12}, {"70000", 70000}}) {
        screen_.next_dialog([text = text](const DialogView& dialog) { type(dialog, text); },
                            click_ok);
        EXPECT_EQ(answer(), value);
    }
    screen_.next_dialog([](const DialogView& dialog) { type(dialog, "four"); }, click_ok,
                        [](const DialogView& dialog) { type(dialog, "4"); }, click_ok);
    EXPECT_EQ(answer(), 4);
    ASSERT_EQ(screen_.asked().size(), 1);
    EXPECT_EQ(screen_.asked()[0].text, "Please enter an integer.");
}

} // namespace
