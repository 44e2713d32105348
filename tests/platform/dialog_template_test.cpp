#include "platform/base/diagnostics.h"
#include "platform/base/window_styles.h"
#include "platform/modules/dialog_template.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/module.h"
#include "platform/modules/module_state.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using tarnel::ControlTemplate;
using tarnel::DialogTemplate;
using tarnel::find_dialog;

HINSTANCE newest = nullptr;

BOOL note_module(HINSTANCE module, DWORD, LPVOID) {
    newest = module;
    return TRUE;
}

/// A module with the resources of `text`, current on this thread.
struct Script {
    explicit Script(std::string text) : text_(std::move(text)) { AfxSetResourceHandle(module); }

    ~Script() { AfxSetResourceHandle(nullptr); }

    const std::string text_;
    const tarnel::ModuleEntry entry{note_module, "Script", text_};
    const HINSTANCE module = newest;
};

/// The only control of a dialog, written as `control`.
ControlTemplate read(const std::string& control) {
    const Script script("1 DIALOG 0, 0, 9, 9 BEGIN " + control + "\nEND");
    const auto dialog = find_dialog(1);
    EXPECT_TRUE(dialog && dialog->controls.size() == 1) << control;
    return dialog && dialog->controls.size() == 1 ? dialog->controls[0] : ControlTemplate();
}

/// What is reported when `text` is refused, without the script's name.
std::string damage(const std::string& text) {
    std::string report;
    tarnel::set_report_sink(
        [](void* line, std::string_view said) { *static_cast<std::string*>(line) += said; },
        &report);
    const Script script(text);
    EXPECT_EQ(find_dialog(1), nullptr) << text;
    tarnel::set_report_sink(nullptr, nullptr);
    return report.substr(report.find(':') + 1);
}

// Identifier, class, text, rectangle, style.
using Row = std::tuple<int, std::string, std::string, int, int, int, int, DWORD>;

std::vector<Row> rows_of(const DialogTemplate& dialog) {
    std::vector<Row> rows;
    for (const ControlTemplate& control : dialog.controls) {
        EXPECT_EQ(control.ex_style, 0U);
        rows.emplace_back(control.id, control.class_name, control.text, control.x, control.y,
                          control.width, control.height, control.style);
    }
    return rows;
}

constexpr int no_id = 0xFFFF;
constexpr DWORD shown = WS_CHILD | WS_VISIBLE;
constexpr DWORD label = shown | WS_GROUP | SS_LEFT;
constexpr DWORD box = shown | WS_GROUP | BS_GROUPBOX;
constexpr DWORD list = shown | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST;
constexpr DWORD strings = list | CBS_HASSTRINGS;
constexpr DWORD check = shown | WS_TABSTOP | BS_AUTOCHECKBOX;
constexpr DWORD push = shown | WS_TABSTOP | BS_PUSHBUTTON;
constexpr DWORD default_push = shown | WS_TABSTOP | BS_DEFPUSHBUTTON;
constexpr DWORD hidden_push = WS_CHILD | WS_TABSTOP | BS_PUSHBUTTON;
constexpr DWORD modal = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SHELLFONT;

const std::vector<Row> serial_rows = {
    {no_id, "Button", "&Options:", 5, 8, 115, 127, box},
    {no_id, "Static", "Serial &Port:", 10, 20, 40, 10, label},
    {544, "ComboBox", "", 55, 20, 55, 35, strings},
    {no_id, "Static", "Baud &Rate", 10, 35, 40, 10, label},
    {545, "ComboBox", "", 55, 35, 55, 53, strings},
    {no_id, "Static", "Data Bits", 10, 50, 40, 10, label},
    {546, "ComboBox", "", 55, 50, 55, 35, strings},
    {no_id, "Static", "Parity", 10, 65, 40, 10, label},
    {547, "ComboBox", "", 55, 65, 55, 51, strings},
    {no_id, "Static", "Stop bits", 10, 80, 40, 10, label},
    {548, "ComboBox", "", 55, 80, 55, 35, strings},
    {no_id, "Static", "&Protocol", 10, 95, 40, 10, label},
    {549, "Button", "DTR/DSR", 55, 95, 50, 10, check},
    {550, "Button", "RTS/CTS", 55, 105, 50, 10, check},
    {551, "Button", "XON/XOFF", 55, 115, 50, 10, check},
    {no_id, "Button", "Startup option", 5, 135, 115, 33, box},
    {557, "Button", "Auto Connect", 12, 148, 68, 10, check},
    {IDOK, "Button", "Ok", 4, 172, 40, 14, default_push | WS_GROUP},
    {IDCANCEL, "Button", "Cancel", 80, 172, 40, 14, push},
};

/// The alternative serial dialog: the same controls lower and, but for the labels and "Auto
/// Connect", one unit to the right; some texts have mnemonics of their own.
std::vector<Row> lowered_serial_rows() {
    std::vector<Row> rows = serial_rows;
    const std::pair<std::size_t, std::string> texts[] = {
        {0, "Options"}, {5, "Data &Bits:"}, {7, "P&arity"}, {9, "&Stop bits"}};
    for (const auto& [row, text] : texts) {
        std::get<2>(rows[row]) = text;
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        int& x = std::get<3>(rows[row]);
        x += x == 5 || x == 55;
        std::get<4>(rows[row]) += row == 5 || row == 6 ? 36 : 35;
    }
    rows.insert(rows.begin(), {{no_id, "Button", "Communication port", 6, 3, 116, 29, box},
                               {201, "ComboBox", "", 9, 14, 109, 94, list}});
    return rows;
}

std::vector<Row> encoder_rows() {
    std::vector<Row> rows = {
        {1019, "Static",
         "Please move each of the arm's joints until all the progress bars are filled.", 14, 7, 174,
         25, label},
        {1000, "Button", "", 7, 34, 210, 198, shown | BS_GROUPBOX},
        {1020, "Static", "Encoders:", 14, 42, 174, 18, label}};
    for (int i = 0; i < 8; ++i) {
        rows.emplace_back(1001 + i, "msctls_progress32", "", 40, 63 + 20 * i, 152, 15,
                          shown | WS_BORDER);
    }
    for (int i = 0; i < 8; ++i) {
        rows.emplace_back(1011 + i, "Static", std::to_string(i + 1), 26, 66 + 20 * i, 11, 11,
                          label);
    }
    for (int i = 0; i < 8; ++i) {
        rows.emplace_back(1021 + i, "Button", std::to_string(i + 1), 14, 65 + 20 * i, 23, 11,
                          hidden_push | (i == 0 ? WS_GROUP : 0));
    }
    rows.emplace_back(1030, "Button", "Do All", 7, 243, 60, 14, hidden_push | WS_GROUP);
    rows.emplace_back(1031, "Button", "Set Home", 82, 243, 60, 14, hidden_push);
    rows.emplace_back(IDCANCEL, "Button", "Cancel", 157, 243, 60, 14, push);
    return rows;
}

const std::vector<Row> probe_rows = {
    {no_id, "Static", "Enter the new &probe's number:", 7, 23, 102, 8, label},
    {211, "Edit", "", 110, 21, 34, 12, shown | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL},
    {221, "msctls_updown32", "Spin1", 146, 20, 11, 11,
     shown | UDS_AUTOBUDDY | UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS | UDS_NOTHOUSANDS},
    {IDOK, "Button", "OK", 166, 7, 50, 14, default_push},
    {IDCANCEL, "Button", "Cancel", 166, 24, 50, 14, push},
};

TEST(DialogTemplates, OfTheLibraryAreComplete) {
    const struct {
        UINT id;
        std::string caption;
        int width;
        int height;
        DWORD style;
        std::vector<Row> rows;
    } dialogs[] = {
        {12500, "Initialising Encoders", 224, 262, 0x90C820C8, encoder_rows()},
        {12501, "Serial Port Configuration", 125, 191, modal, serial_rows},
        {12502, "Serial Port Configuration", 125, 231, modal, lowered_serial_rows()},
        {12503, "Probe Selection", 223, 55, modal | DS_CONTEXTHELP, probe_rows},
    };

    std::ostringstream text;
    text << std::ifstream(TARNEL_SOURCE_DIR "/resources/TarnelToolBoxLib.rc").rdbuf();
    const Script script(text.str());
    for (const auto& [id, caption, width, height, style, rows] : dialogs) {
        SCOPED_TRACE(id);
        const auto dialog = find_dialog(id);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->caption, caption);
        EXPECT_EQ(std::tuple(dialog->x, dialog->y, dialog->width, dialog->height),
                  std::tuple(0, 0, width, height));
        EXPECT_EQ(dialog->style, style);
        EXPECT_EQ(dialog->ex_style, 0U);
        EXPECT_EQ(std::tuple(dialog->font, dialog->font_size), std::tuple("MS Shell Dlg", 8));
        EXPECT_EQ(rows_of(*dialog), rows);
    }
}

TEST(DialogTemplates, KeywordsBringTheirClassAndStyles) {
    const struct {
        std::string control;
        std::string class_name;
        DWORD style;
        DWORD ex_style = 0;
    } cases[] = {
        {R"(ltext "", 1, 0, 0, 0, 0)", "Static", 0x50020000},
        {R"(GROUPBOX "", 1, 0, 0, 0, 0)", "Button", 0x50000007},
        {R"(PUSHBUTTON "", 1, 0, 0, 0, 0)", "Button", 0x50010000},
        {R"(DEFPUSHBUTTON "", 1, 0, 0, 0, 0)", "Button", 0x50010001},
        {R"(CHECKBOX "", 1, 0, 0, 0, 0)", "Button", 0x50010002},
        {R"(AUTOCHECKBOX "", 1, 0, 0, 0, 0)", "Button", 0x50010003},
        {R"(EDITTEXT 1, 0, 0, 0, 0)", "Edit", 0x50810000},
        {R"(COMBOBOX 1, 0, 0, 0, 0)", "ComboBox", 0x50010000},
        {R"(CONTROL "", 1, "MSCTLS_Progress32", 0, 0, 0, 0, 0)", "msctls_progress32", 0x50000000},
        {R"(EDITTEXT 1, 0, 0, 0, 0, NOT WS_BORDER | ES_AUTOHSCROLL)", "Edit", 0x50010080},
        {R"(EDITTEXT 1, 0, 0, 0, 0, ((0x100 | (NOT WS_TABSTOP)) | not 0x800000), 4)", "Edit",
         0x50000100, 4},
        {R"(COMBOBOX 1, 0, 0, 0, 0, NOT WS_DISABLED | NOT WS_VISIBLE | WS_VISIBLE)", "ComboBox",
         0x50010000},
        {R"(CONTROL "", 1, "edit", NOT WS_CHILD, 0, 0, 0, 0, WS_EX_CONTEXTHELP | 4)", "Edit",
         0x10000000, 0x404},
    };

    for (const auto& [text, class_name, style, ex_style] : cases) {
        const ControlTemplate control = read(text);
        EXPECT_EQ(control.class_name, class_name) << text;
        EXPECT_EQ(control.style, style) << text;
        EXPECT_EQ(control.ex_style, ex_style) << text;
        EXPECT_EQ(control.id, 1) << text;
    }
    const ControlTemplate control = read(R"(LTEXT "a""&b\n", -1, -32768, -2, 32767, 0x7FFF)");
    EXPECT_EQ(control.text, "a\"&b\n");
    EXPECT_EQ(control.id, read(R"(LTEXT "", IDC_STATIC, 0, 0, 0, 0)").id);
    EXPECT_EQ(std::tuple(control.id, control.x, control.y, control.width, control.height),
              std::tuple(0xFFFF, -32768, -2, 32767, 32767));
}

TEST(DialogTemplates, OptionsMayComeInAnyOrderAndImplyStyles) {
    const Script script(R"(
1 DIALOG 1, 2, 3, 4 {}
2 DialogEx MOVEABLE PURE DISCARDABLE 0, -2, 3, 4
CAPTION "Größe &x" LANGUAGE 7, 1
CHARACTERISTICS 1 VERSION 2
FONT 9, "Sans", 400, 1, 0x1
EXSTYLE WS_EX_CONTEXTHELP
STYLE WS_POPUP
BEGIN EDITTEXT IDYES, 0, 0, 0, 0 EDITTEXT IDNO, 0, 0, 0, 0 END
STRINGTABLE { 1 "one" })");
    const auto plain = find_dialog(1);
    const auto rich = find_dialog(2);
    ASSERT_TRUE(plain && rich);
    EXPECT_EQ(plain->style, 0x80880000);
    EXPECT_EQ(std::tuple(plain->font, plain->font_size, plain->caption), std::tuple("", 0, ""));
    EXPECT_EQ(std::tuple(plain->x, plain->y, plain->width, plain->height), std::tuple(1, 2, 3, 4));
    EXPECT_EQ(rich->style, WS_POPUP | WS_CAPTION | DS_SETFONT);
    EXPECT_EQ(rich->ex_style, 0x400U);
    EXPECT_EQ(std::tuple(rich->font, rich->font_size), std::tuple("Sans", 9));
    EXPECT_EQ(rich->caption, "Größe &x");
    ASSERT_EQ(rich->controls.size(), 2U);
    EXPECT_EQ(rich->controls[1].id, IDNO);
}

TEST(DialogTemplates, ReportThePlaceOfDamage) {
    const std::string begin = "1 DIALOG 0, 0, 9, 9\nBEGIN\n";

    const struct {
        std::string script;
        std::string report;
    } cases[] = {
        {"DIALOG 0, 0, 9, 9 {}", "1:1: expected a dialog identifier, found 'DIALOG'"},
        {"65536 DIALOG 0, 0, 9, 9 {}", "1:1: dialog identifier is out of range (0 to 65535)"},
        {begin + "END\n 1 DIALOGEX 0, 0, 9, 9 {}", "4:2: dialog 1 stands already in 1:1"},
        {"1 DIALOG 32768, 0, 9, 9 {}", "1:10: position is out of range (-32768 to 32767)"},
        {"1 DIALOG 0, -32769, 9, 9 {}", "1:13: position is out of range (-32768 to 32767)"},
        {"1 DIALOG 0, 0, -1, 9 {}", "1:16: size is out of range (0 to 32767)"},
        {"1 DIALOG 0, 0, 9 {}", "1:18: expected ',', found '{'"},
        {"1 DIALOG 0, 0, 9, 9\nMENU 3", "2:1: expected 'BEGIN', found 'MENU'"},
        {"1 DIALOG 0, 0, 9, 9 FONT 32768, \"x\" {}", "1:26: font size is out of range"},
        {"1 DIALOG 0, 0, 9, 9 STYLE ws_popup {}", "1:27: expected a style, found 'ws_popup'"},
        {"1 DIALOG 0, 0, 9, 9 STYLE (1 | 2 {}", "1:34: expected ')', found '{'"},
        {"1 DIALOG 0, 0, 9, 9 STYLE 1) {}", "1:28: expected 'BEGIN', found ')'"},
        {"1 DIALOG 0, 0, 9, 9 STYLE " + std::string(std::size_t{1} << 20U, '('),
         "1:1048603: expected a style, found the end of the script"},
        {begin + "LISTBOX 1, 0, 0, 0, 0 END", "3:1: expected a control or END, found 'LISTBOX'"},
        {begin + "LTEXT 1, 0, 0, 0, 0 END", "3:7: expected a string, found '1'"},
        {begin + "EDITTEXT IDX, 0, 0, 0, 0 END",
         "3:10: expected a control identifier, found 'IDX'"},
        {begin + "EDITTEXT -2, 0, 0, 0, 0 END", "3:10: control identifier is out of range"},
        {begin + "EDITTEXT 65536, 0, 0, 0, 0 END", "3:10: control identifier is out of range"},
        {begin + "EDITTEXT 1, 0, 0, 0, 0, 1, 2, 3 END",
         "3:29: expected a control or END, found ','"},
        {begin + "CONTROL \"\", 1, \"SysListView32\", 0, 0, 0, 9, 9 END",
         "3:16: control class is not known, only Button, Edit, Static, ComboBox,"},
        {begin + "EDITTEXT 1, 0, 0, 0, 0",
         "3:23: expected a control or END, found the end of the script"},
    };

    for (const auto& [script, report] : cases) {
        EXPECT_EQ(damage(script).substr(0, report.size()), report);
    }
}

TEST(DialogTemplates, OfALanguageFallBackToTheChain) {
    const Script own(
        "1 DIALOG 0, 0, 1, 1 CAPTION \"own\" {} 2 DIALOG 0, 0, 1, 1 CAPTION \"own\" {}");
    AFX_EXTENSION_MODULE extension{};
    AfxInitExtensionModule(extension, own.module);
    new CDynLinkLibrary(extension);
    std::shared_ptr<const DialogTemplate> kept;
    {
        const Script language(
            "1 DIALOG 0, 0, 1, 1 CAPTION \"eigener\" {} STRINGTABLE { 2 \"zwei\" }");
        kept = find_dialog(1);
        ASSERT_TRUE(kept && find_dialog(2));
        EXPECT_EQ(find_dialog(2)->caption, "own");
        EXPECT_EQ(find_dialog(3), nullptr);
        EXPECT_EQ(find_dialog(0x10001), nullptr);
    }
    EXPECT_EQ(kept->caption, "eigener") << "a template outlives its module";
    EXPECT_EQ(find_dialog(1)->caption, "own");
    AfxTermExtensionModule(extension);
    EXPECT_EQ(find_dialog(1), nullptr);
}

} // namespace
