#include "platform/messages/window.h"
#include "platform/windows/combo_box.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/user_actions.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tarnel;
using Heard = std::vector<int>;

constexpr DWORD usual = WS_CHILD | WS_VISIBLE;

/// A dialog that controls are put on one after the other, and that hears of them.
class Panel : public CWnd {
  public:
    Panel() { CreateEx(0, "#32770", "", WS_POPUP | WS_VISIBLE, {0, 0, 300, 200}, nullptr, 0); }

    ~Panel() override { DestroyWindow(); }

    /// The new control, numbered from 1; whatever its class, the object has a list's functions.
    CComboBox& add(LPCSTR class_name, DWORD style, RECT place = {0, 0, 40, 20}) {
        CComboBox& control = controls_.emplace_back();
        EXPECT_TRUE(control.CreateEx(0, class_name, "", style | usual, place, this,
                                     static_cast<UINT>(controls_.size())));
        return control;
    }

    /// The notifications since it was last asked.
    Heard take_heard() { return std::exchange(heard_, {}); }

    std::function<void()> on_command = [] {};
    std::function<LRESULT(const NMUPDOWN&)> on_step = [](const NMUPDOWN&) { return 0; };

  private:
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_COMMAND) {
            heard_.push_back(HIWORD(wparam));
            on_command();
            return 0;
        }
        return message == WM_NOTIFY ? on_step(*reinterpret_cast<NMUPDOWN*>(lparam))
                                    : CWnd::WindowProc(message, wparam, lparam);
    }

    std::deque<CComboBox> controls_;
    Heard heard_;
};

std::string text_of(const CWnd& window) {
    CString text;
    window.GetWindowText(text);
    return text.GetString();
}

LRESULT send(const CWnd& window, UINT message, int value, const char* text) {
    return window.SendMessage(message, static_cast<WPARAM>(value), reinterpret_cast<LPARAM>(text));
}

TEST(Buttons, ToggleBeforeTheirParentHearsAndOnlyByClicks) {
    Panel panel;
    CWnd& box = panel.add("BUTTON", BS_AUTOCHECKBOX);
    std::vector<LRESULT> seen;
    panel.on_command = [&] { seen.push_back(box.SendMessage(BM_GETCHECK)); };
    user_clicks(box.m_hWnd);
    user_presses(panel.m_hWnd, VK_SPACE); // the click has brought the focus
    box.SendMessage(BM_SETCHECK, BST_INDETERMINATE);
    box.SendMessage(BM_SETCHECK, 7);
    EXPECT_EQ(box.SendMessage(BM_GETCHECK), BST_INDETERMINATE);
    box.SendMessage(BM_CLICK);
    EXPECT_EQ(seen, (std::vector<LRESULT>{BST_CHECKED, BST_UNCHECKED, BST_CHECKED}));

    CWnd& manual = panel.add("Button", BS_CHECKBOX);
    user_clicks(manual.m_hWnd);
    EXPECT_EQ(manual.SendMessage(BM_GETCHECK), BST_UNCHECKED);
    EXPECT_EQ(panel.take_heard(), (Heard(4, BN_CLICKED)));
}

TEST(Buttons, TakeNoClickWhileTheyOrTheirDialogCannotBeUsed) {
    Panel panel;
    CWnd& button = panel.add("Button", BS_PUSHBUTTON);
    CWnd& frame = panel.add("Button", BS_GROUPBOX);
    const auto click_all = [&] {
        for (const CWnd* target : {&button, &frame}) {
            user_clicks(target->m_hWnd);
            target->SendMessage(BM_CLICK);
        }
        return panel.take_heard().size();
    };
    EXPECT_EQ(click_all(), 2U);
    for (CWnd* unusable : {&button, static_cast<CWnd*>(&panel)}) {
        unusable->EnableWindow(FALSE);
        EXPECT_EQ(click_all(), 0U);
        unusable->EnableWindow(TRUE);
        unusable->ShowWindow(SW_HIDE);
        EXPECT_EQ(click_all(), 0U);
        unusable->ShowWindow(SW_SHOW);
    }
    EXPECT_EQ(click_all(), 2U);
}

TEST(UserActions, OutliveWhatTheirHandlersDestroy) {
    const std::vector<std::function<void(Panel&)>> actions = {
        [](Panel& panel) { user_clicks(panel.add("Button", BS_AUTOCHECKBOX).m_hWnd); },
        [](Panel& panel) { user_types(panel.add("Edit", 0).m_hWnd, "1"); },
        [](Panel& panel) { panel.add("Edit", 0).SetWindowText("1"); },
        [](Panel& panel) {
            CComboBox& list = panel.add("comboBOX", CBS_DROPDOWNLIST);
            list.AddString("one");
            user_chooses(list.m_hWnd, 0);
        },
        [](Panel& panel) {
            panel.add("Edit", 0);
            const CWnd& arrows = panel.add("msctls_updown32", UDS_AUTOBUDDY | UDS_SETBUDDYINT);
            user_steps(arrows.m_hWnd, 1);
        },
        [](Panel& panel) { user_steps(panel.add("msctls_updown32", 0).m_hWnd, 1); },
    };
    for (const auto& act : actions) {
        int handled = 0;
        Panel panel;
        panel.on_command = [&] { handled += panel.DestroyWindow(); };
        panel.on_step = [&](const NMUPDOWN&) {
            panel.DestroyWindow();
            return 0;
        };
        act(panel);
        EXPECT_FALSE(panel.m_hWnd);
    }
    user_clicks(nullptr);
}

TEST(EditBoxes, CutTextsAndSelectionsBetweenCharacters) {
    Panel panel;
    CWnd& edit = panel.add("Edit", ES_AUTOHSCROLL);
    const auto selection = [&](int from, int to) {
        edit.SendMessage(EM_SETSEL, static_cast<WPARAM>(from), to);
        const LRESULT both = edit.SendMessage(EM_GETSEL);
        return std::pair<int, int>(LOWORD(both), HIWORD(both));
    };
    edit.SetWindowText("aµb");
    EXPECT_EQ(edit.SendMessage(EM_GETSEL), 0);
    EXPECT_EQ(selection(2, 3), std::pair(1, 3));
    EXPECT_EQ(selection(0, -1), std::pair(0, 4));
    EXPECT_EQ(selection(99, 2), std::pair(1, 4));
    EXPECT_EQ(selection(-1, 0), std::pair(4, 4));

    const std::string full(29'999, 'x');
    user_types(edit.m_hWnd, full + "µm");
    EXPECT_EQ(text_of(edit), full);
    EXPECT_EQ(edit.SendMessage(EM_GETSEL), MAKELPARAM(29'999, 29'999));
    edit.SetWindowText((full + "µ").c_str());
    EXPECT_EQ(text_of(edit), full);
    EXPECT_EQ(panel.take_heard(), Heard(3, EN_CHANGE));
    user_types(edit.m_hWnd, full + '\0' + "x"); // ends at the zero: no change
    edit.EnableWindow(FALSE);
    user_types(edit.m_hWnd, "no");
    EXPECT_EQ(text_of(edit), full);
    EXPECT_EQ(panel.take_heard(), Heard{});
}

TEST(DropDownLists, FindAndSelectAsDocumented) {
    Panel panel;
    CComboBox& list = panel.add("comboBOX", CBS_DROPDOWNLIST);
    for (LPCSTR text : {"Keine", "1.5", "110", "1", "µ-even"}) {
        list.AddString(text);
    }
    EXPECT_EQ(list.GetCurSel(), CB_ERR);
    EXPECT_EQ(text_of(list), "");
    EXPECT_EQ(send(list, CB_SELECTSTRING, -1, "KEIN"), 0);
    EXPECT_EQ(send(list, CB_SELECTSTRING, -1, "1"), 1);
    for (LPCSTR nothing : {"", "2", "1.50", static_cast<LPCSTR>(nullptr)}) {
        EXPECT_EQ(send(list, CB_SELECTSTRING, -1, nothing), CB_ERR);
        EXPECT_EQ(text_of(list), "1.5");
    }
    EXPECT_EQ(send(list, CB_FINDSTRING, 1, "1"), 2);
    EXPECT_EQ(send(list, CB_FINDSTRING, 99, "1"), 1);
    EXPECT_EQ(send(list, CB_FINDSTRING, 4, "µ-EVEN"), 4);
    EXPECT_EQ(send(list, CB_FINDSTRINGEXACT, -1, "1"), 3);

    CString text("old");
    list.GetLBText(4, text);
    EXPECT_EQ(text, "µ-even");
    EXPECT_EQ(list.SendMessage(CB_GETLBTEXTLEN, 5), CB_ERR);
    EXPECT_EQ(list.SetCurSel(4), 4);
    EXPECT_EQ(send(list, WM_SETTEXT, 0, "none of them"), CB_ERR);
    EXPECT_EQ(text_of(list), "µ-even");
    EXPECT_EQ(list.SetCurSel(5), CB_ERR);
    EXPECT_EQ(list.GetCurSel(), CB_ERR);
    EXPECT_EQ(text_of(list), "");

    EXPECT_EQ(panel.take_heard(), Heard{});
}

TEST(DropDownLists, KeepTheirSelectionWhileEntriesComeAndGo) {
    Panel panel;
    CComboBox& list = panel.add("comboBOX", CBS_DROPDOWNLIST | CBS_SORT);
    EXPECT_EQ(list.AddString("b"), 0);
    EXPECT_EQ(list.AddString("D"), 1);
    list.SetCurSel(1);
    EXPECT_EQ(list.AddString("C"), 1);
    EXPECT_EQ(send(list, CB_INSERTSTRING, 0, "z"), 0);
    EXPECT_EQ(send(list, CB_INSERTSTRING, -1, "a"), 4);
    EXPECT_EQ(send(list, CB_INSERTSTRING, 6, "a"), CB_ERR);
    EXPECT_EQ(list.GetCurSel(), 3);
    EXPECT_EQ(list.SendMessage(CB_DELETESTRING, 1), 4);
    EXPECT_EQ(list.GetCurSel(), 2);
    EXPECT_EQ(text_of(list), "D");
    EXPECT_EQ(list.SendMessage(CB_DELETESTRING, 2), 3);
    EXPECT_EQ(list.SendMessage(CB_DELETESTRING, 3), CB_ERR);
    EXPECT_EQ(list.GetCurSel(), CB_ERR);
    list.SetCurSel(0);
    EXPECT_EQ(list.SendMessage(CB_RESETCONTENT), 0);
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(text_of(list), "");
}

TEST(DropDownLists, TellOfAPersonsChoiceWhenItChangesSomething) {
    Panel panel;
    CComboBox& list = panel.add("comboBOX", CBS_DROPDOWNLIST);
    user_focuses(list.m_hWnd);
    user_presses(panel.m_hWnd, VK_DOWN); // nothing there to choose
    list.AddString("even");
    list.AddString("odd");
    user_presses(panel.m_hWnd, VK_DOWN);
    EXPECT_EQ(list.GetCurSel(), 0);
    user_presses(panel.m_hWnd, VK_UP);
    EXPECT_EQ(list.GetCurSel(), 0);
    for (const int choice : {1, 1, 2, -1}) {
        user_chooses(list.m_hWnd, choice);
        EXPECT_EQ(list.GetCurSel(), 1) << choice;
    }
    list.EnableWindow(FALSE); // and keeps the focus
    user_presses(panel.m_hWnd, VK_UP);
    user_chooses(list.m_hWnd, 0);
    EXPECT_EQ(list.GetCurSel(), 1);
    EXPECT_EQ(panel.take_heard(), Heard(2, CBN_SELCHANGE));
}

constexpr DWORD arrows_at_edit = UDS_SETBUDDYINT | UDS_AUTOBUDDY | UDS_ARROWKEYS;

TEST(UpDownControls, DockAtTheControlBefore) {
    Panel panel;
    CWnd& edit = panel.add("Edit", 0, {10, 20, 60, 44});
    CWnd& arrows = panel.add("msctls_updown32", arrows_at_edit | UDS_ALIGNRIGHT, {0, 0, 11, 14});
    RECT left, right;
    edit.GetWindowRect(&left);
    arrows.GetWindowRect(&right);
    EXPECT_EQ(left, (RECT{10, 20, 49, 44}));
    EXPECT_EQ(right, (RECT{49, 20, 60, 44}));

    edit.DestroyWindow();
    user_steps(arrows.m_hWnd, -1); // the range goes from 100 down to 0
    EXPECT_EQ(arrows.SendMessage(UDM_GETPOS), MAKELPARAM(1, 1));
}

TEST(UpDownControls, StepFromWhatWasTypedToTheirLimits) {
    Panel panel;
    CWnd& edit = panel.add("Edit", 0);
    CWnd& arrows = panel.add("msctls_updown32", arrows_at_edit);
    const auto after = [&](LPCSTR typed, int steps) {
        edit.SetWindowText(typed);
        user_steps(arrows.m_hWnd, steps);
        return text_of(edit);
    };
    arrows.SendMessage(UDM_SETRANGE, 0, MAKELPARAM(2000, -3));
    EXPECT_EQ(arrows.SendMessage(UDM_GETRANGE), MAKELPARAM(2000, -3));
    EXPECT_EQ(arrows.SendMessage(UDM_SETPOS, 0, MAKELPARAM(7, 0)), 0);
    EXPECT_EQ(text_of(edit), "7");
    EXPECT_EQ(after(" 1234 ", 1), "1235");
    for (LPCSTR none : {"", "x", "12x", "1 2", "2001", "99999999999", "  "}) {
        edit.SetWindowText(none);
        EXPECT_EQ(arrows.SendMessage(UDM_GETPOS), MAKELPARAM(1235, 1)) << none;
    }
    EXPECT_EQ(after("2001", -1), "1234");
    EXPECT_EQ(after("1999", 5), "2000");
    EXPECT_EQ(after("-2", std::numeric_limits<int>::min()), "-3");

    panel.take_heard();
    user_steps(arrows.m_hWnd, -1); // at the limit: nothing is written
    EXPECT_EQ(panel.take_heard(), Heard{});
    EXPECT_EQ(arrows.SendMessage(UDM_SETPOS32, 0, 70'000), -3);
    EXPECT_EQ(text_of(edit), "2000");
}

TEST(UpDownControls, WrapWhereTheyAreToldAndAskTheirParent) {
    Panel panel;
    CWnd& arrows = panel.add("msctls_updown32", UDS_WRAP);
    std::vector<std::pair<int, int>> asked;
    LRESULT veto = 0;
    panel.on_step = [&](const NMUPDOWN& step) {
        EXPECT_EQ(step.hdr.hwndFrom, arrows.m_hWnd);
        EXPECT_EQ(step.hdr.code, UDN_DELTAPOS);
        asked.emplace_back(step.iPos, step.iDelta);
        return veto;
    };
    const auto position_after = [&](int steps) {
        user_steps(arrows.m_hWnd, steps);
        return arrows.SendMessage(UDM_GETPOS32);
    };
    EXPECT_EQ(position_after(1), 100); // upwards, to the maximum of 0 and beyond
    EXPECT_EQ(position_after(-1), 0);
    arrows.SendMessage(UDM_SETRANGE32, 5, 8);
    EXPECT_EQ(position_after(1), 5); // from below the range
    EXPECT_EQ(position_after(2), 7);
    veto = 1;
    EXPECT_EQ(position_after(2), 7);
    EXPECT_EQ(asked, (std::vector<std::pair<int, int>>{{0, -1}, {100, 1}, {0, 1}, {5, 2}, {7, 2}}));
}

TEST(Controls, AreShownAsTheyAre) {
    support::ScriptedPresenter screen;
    Panel panel;
    CWnd& box = panel.add("button", BS_AUTOCHECKBOX);
    CWnd& edit = panel.add("Edit", 0);
    CWnd& arrows = panel.add("msctls_updown32", arrows_at_edit);
    CWnd& bar = panel.add("msctls_progress32", 0);
    panel.ShowWindow(SW_HIDE);
    panel.ShowWindow(SW_SHOW);
    ASSERT_TRUE(screen.is_open(panel.m_hWnd));

    bar.SendMessage(PBM_SETPOS, 30);
    arrows.SendMessage(UDM_SETPOS32, 0, 12);
    edit.SendMessage(EM_SETSEL, 1, 2);
    user_clicks(box.m_hWnd);
    const auto now = [&](UINT id) { return support::control(screen.shown(panel.m_hWnd), id); };
    ASSERT_TRUE(support::dispatch_until([&] { return now(1).check == BST_CHECKED; }));
    EXPECT_EQ(now(2).text, "12");
    EXPECT_EQ(now(2).selection_start, 1);
    EXPECT_EQ(now(2).selection_end, 2);
    EXPECT_EQ(now(3).buddy, edit.m_hWnd);
    EXPECT_EQ(now(3).minimum, 100);
    EXPECT_EQ(now(4).maximum, 100);
    EXPECT_EQ(now(4).position, 30);
}

} // namespace
