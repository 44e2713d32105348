#include "platform/base/window_styles.h"
#include "platform/modules/dialog_template.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/module.h"
#include "platform/modules/module_state.h"
#include "tests/support/reports.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <tuple>

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
    const support::Reports reports;
    const Script script(text);
    EXPECT_EQ(find_dialog(1), nullptr) << text;
    const auto lines = reports.lines();
    return lines.size() == 1 ? lines[0].substr(lines[0].find(':') + 1) : "";
}

constexpr DWORD modal = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SHELLFONT;

TEST(DialogTemplates, OfTheLibraryAreComplete) {
    const struct {
        UINT id;
        std::string caption;
        int width;
        int height;
        DWORD style;
        std::size_t controls;
    } dialogs[] = {
        {12500, "Initialising Encoders", 224, 262, 0x90C820C8, 30},
        {12501, "Serial Port Configuration", 125, 191, modal, 19},
        {12502, "Serial Port Configuration", 125, 231, modal, 21},
        {12503, "Probe Selection", 223, 55, modal | DS_CONTEXTHELP, 5},
    };

    std::ostringstream text;
    text << std::ifstream(TARNEL_SOURCE_DIR "/resources/TarnelToolBoxLib.rc").rdbuf();
    const Script script(text.str());
    for (const auto& [id, caption, width, height, style, controls] : dialogs) {
        const auto dialog = find_dialog(id);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(std::tie(dialog->caption, dialog->width, dialog->height, dialog->style),
                  std::tie(caption, width, height, style));
        EXPECT_EQ(std::tuple(dialog->font, dialog->font_size), std::tuple("MS Shell Dlg", 8));
        EXPECT_EQ(dialog->controls.size(), controls) << id;
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
        {R"(PUSHBUTTON "", 1, 0, 0, 0, 0)", "Button", 0x50010000},
        {R"(DEFPUSHBUTTON "", 1, 0, 0, 0, 0)", "Button", 0x50010001},
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
        {"1 DIALOG 0, 0, -1, 9 {}", "1:16: size is out of range (0 to 32767)"},
        {"1 DIALOG 0, 0, 9 {}", "1:18: expected ',', found '{'"},
        {"1 DIALOG 0, 0, 9, 9\nMENU 3", "2:1: expected 'BEGIN', found 'MENU'"},
        {"1 DIALOG 0, 0, 9, 9 FONT 32768, \"x\" {}", "1:26: font size is out of range"},
        {"1 DIALOG 0, 0, 9, 9 STYLE ws_popup {}", "1:27: expected a style, found 'ws_popup'"},
        {"1 DIALOG 0, 0, 9, 9 STYLE (1 | 2 {}", "1:34: expected ')', found '{'"},
        {"1 DIALOG 0, 0, 9, 9 STYLE " + std::string(std::size_t{1} << 20U, '('),
         "1:1048603: expected a style, found the end of the script"},
        {begin + "LISTBOX 1, 0, 0, 0, 0 END", "3:1: expected a control or END, found 'LISTBOX'"},
        {begin + "EDITTEXT IDX, 0, 0, 0, 0 END",
         "3:10: expected a control identifier, found 'IDX'"},
        {begin + "EDITTEXT -2, 0, 0, 0, 0 END", "3:10: control identifier is out of range"},
        {begin + "EDITTEXT 1, 0, 0, 0, 0, 1, 2, 3 END",
         "3:29: expected a control or END, found ','"},
        {begin + "CONTROL \"\", 1, \"SysListView32\", 0, 0, 0, 9, 9 END",
         "3:16: control class is not known, only Button, Edit, Static, ComboBox,"},
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
