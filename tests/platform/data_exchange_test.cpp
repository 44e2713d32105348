#include "platform/modules/module_state.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/data_exchange.h"
#include "platform/windows/dialog.h"
#include "platform/windows/message_box.h"
#include "tests/support/resource_library.h"
#include "tests/support/scripted_presenter.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using support::control;
using tarnel::DialogView;
using tarnel::MessageBoxView;
using tarnel::user_presses;
using tarnel::user_types;

constexpr UINT dialog_id = 100;
constexpr int count_id = 101;
constexpr int check_id = 102;
constexpr int list_id = 103;

/// A dialog with three controls and what they stand for.
class Settings : public CDialog {
  public:
    Settings() : CDialog(dialog_id) {}

    BOOL OnInitDialog() override {
        for (LPCSTR item : {"None", "Odd", "Even", "1.5", "1"}) {
            GetDlgItem(list_id)->SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
        }
        return CDialog::OnInitDialog();
    }

    void DoDataExchange(CDataExchange* exchange) override {
        DDX_Control(exchange, list_id, list);
        DDX_Check(exchange, check_id, check);
        DDX_Text(exchange, count_id, count);
        DDX_CBString(exchange, list_id, choice);
    }

    BOOL take_count(LPCSTR text) {
        GetDlgItem(count_id)->SetWindowText(text);
        return UpdateData(TRUE);
    }

    CWnd list;
    LONG count = 0;
    int check = 0;
    CString choice;
};

/// On the screen from the beginning.
struct OpenSettings : Settings {
    OpenSettings() { EXPECT_TRUE(Create(dialog_id)); }

    ~OpenSettings() override { DestroyWindow(); }
};

constexpr const char* script = R"(
STRINGTABLE BEGIN 61712 "Bitte eine ganze Zahl." END
100 DIALOG 0, 0, 100, 60
STYLE WS_POPUP | WS_CAPTION | WS_VISIBLE
CAPTION "Settings"
BEGIN
    AUTOCHECKBOX "Check", 102, 0, 0, 50, 14
    COMBOBOX 103, 0, 20, 50, 60, CBS_DROPDOWNLIST
    EDITTEXT 101, 0, 40, 50, 14
END
)";

/// A screen, and the resources of the dialog.
class DataExchange : public testing::Test {
  protected:
    support::ScriptedPresenter screen_;
    support::ResourceLibrary library_{script};
};

TEST_F(DataExchange, GoesBothWays) {
    OpenSettings settings;
    settings.count = std::numeric_limits<LONG>::min();
    settings.check = BST_INDETERMINATE;
    settings.choice = "eVe";
    EXPECT_TRUE(settings.UpdateData(FALSE));

    CString text;
    settings.GetDlgItem(count_id)->GetWindowText(text);
    EXPECT_EQ(text, "-2147483648");
    settings.check = settings.count = 0;
    EXPECT_TRUE(settings.UpdateData(TRUE));
    EXPECT_EQ(settings.count, std::numeric_limits<LONG>::min());
    EXPECT_EQ(settings.check, BST_INDETERMINATE);
    EXPECT_EQ(settings.choice, "Even");

    settings.check = 3;
    settings.choice = "1"; // also begins "1.5", which stands first
    settings.UpdateData(FALSE);
    settings.UpdateData(TRUE);
    EXPECT_EQ(settings.check, BST_UNCHECKED);
    EXPECT_EQ(settings.choice, "1.5");

    settings.choice = "Mark"; // unknown: the selection stays
    settings.UpdateData(FALSE);
    settings.UpdateData(TRUE);
    EXPECT_EQ(settings.choice, "1.5");
    settings.list.SendMessage(CB_SETCURSEL, static_cast<WPARAM>(-1));
    settings.UpdateData(TRUE);
    EXPECT_EQ(settings.choice, "");
}

TEST_F(DataExchange, TakesWholeNumbersAndCutsThemTo32Bits) {
    OpenSettings settings;
    const std::pair<LPCSTR, LONG> taken[] = {
        {" \t42 ", 42},
        {"+7", 7},
        {"-0", 0},
        {"007", 7},
        {"2147483648", std::numeric_limits<LONG>::max()},
        {"-99999999999999999999", std::numeric_limits<LONG>::min()},
    };
    for (const auto& [text, value] : taken) {
        settings.count = -1;
        EXPECT_TRUE(settings.take_count(text)) << text;
        EXPECT_EQ(settings.count, value) << text;
    }
    EXPECT_TRUE(screen_.asked().empty());
}

TEST_F(DataExchange, AsksForAWholeNumberAndEndsThere) {
    OpenSettings settings;
    settings.count = 5;
    settings.choice = "not taken";
    std::size_t refused = 0;
    for (LPCSTR text : {"", "  ", "1.5", "0x10", "4 2", "+-5", "++5", "-", "+", "99999999999x"}) {
        EXPECT_FALSE(settings.take_count(text)) << text;
        ASSERT_EQ(screen_.asked().size(), ++refused) << text;
    }
    EXPECT_EQ(settings.count, 5);
    EXPECT_EQ(settings.choice, "not taken");

    const MessageBoxView box = screen_.asked().back();
    EXPECT_EQ(box.text, "Bitte eine ganze Zahl.");
    EXPECT_EQ(box.owner, settings.m_hWnd);
    EXPECT_EQ(box.type, MB_OK | MB_ICONEXCLAMATION);
    EXPECT_TRUE(settings.IsWindowEnabled());

    // Ready to be typed over.
    EXPECT_TRUE(support::dispatch_until([&] {
        const auto dialog = screen_.shown(settings.m_hWnd);
        const auto& edit = control(dialog, count_id);
        return dialog.focus == edit.window && edit.selection_start == 0 && edit.selection_end == 12;
    }));
}

TEST_F(DataExchange, KeepsDialogsOpenUntilTheirNumbersAreRight) {
    const auto run = [this] {
        screen_.next_dialog(
            [](const DialogView& dialog) {
                user_types(control(dialog, count_id).window, "twelve");
                user_presses(dialog.window, VK_RETURN);
            },
            [](const DialogView& dialog) {
                EXPECT_EQ(control(dialog, count_id).text, "twelve");
                user_types(control(dialog, count_id).window, "12");
                user_presses(dialog.window, VK_RETURN);
            });
        AfxSetResourceHandle(library_.module);
        Settings settings;
        EXPECT_EQ(settings.DoModal(), IDOK);
        EXPECT_EQ(settings.count, 12);
        return 0U;
    };
    {
        const support::Worker first(run), second(run);
        run();
    }
    EXPECT_EQ(screen_.asked().size(), 3U);
    EXPECT_EQ(screen_.dialogs().size(), 3U);
}

TEST_F(DataExchange, OutlivesTheDialogThatIsAskedIn) {
    OpenSettings settings;
    AfxSetResourceHandle(nullptr);
    screen_.next_answer([&](const MessageBoxView&) { settings.DestroyWindow(); });
    EXPECT_FALSE(settings.take_count("?"));
    EXPECT_EQ(screen_.asked().at(0).text, "Please enter an integer.");
    EXPECT_FALSE(screen_.is_open(screen_.asked()[0].window));
}

} // namespace
