#include "platform/modules/rc_dialog.h"

#include "platform/base/letter_case.h"
#include "platform/base/window_styles.h"
#include "platform/modules/rc_constants.h"
#include "platform/modules/rc_statement.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace tarnel {

namespace {

struct ControlKeyword {
    std::string_view keyword;
    std::string_view class_name;
    DWORD style;
    bool has_text;
};

constexpr std::array<ControlKeyword, 8> control_keywords = {{
    {"LTEXT", "Static", SS_LEFT | WS_GROUP, true},
    {"GROUPBOX", "Button", BS_GROUPBOX, true},
    {"PUSHBUTTON", "Button", BS_PUSHBUTTON | WS_TABSTOP, true},
    {"DEFPUSHBUTTON", "Button", BS_DEFPUSHBUTTON | WS_TABSTOP, true},
    {"AUTOCHECKBOX", "Button", BS_AUTOCHECKBOX | WS_TABSTOP, true},
    {"CHECKBOX", "Button", BS_CHECKBOX | WS_TABSTOP, true},
    {"EDITTEXT", "Edit", WS_BORDER | WS_TABSTOP, false},
    {"COMBOBOX", "ComboBox", WS_TABSTOP, false},
}};

constexpr std::array<std::string_view, 6> class_names = {
    "Button", "Edit", "Static", "ComboBox", "msctls_progress32", "msctls_updown32"};

/// Takes a number of dialog units that 16 bits can hold.
int expect_units(ScriptReader& reader, std::string_view what, int least) {
    const char* const at = reader.peek().spelling.data();
    const bool negative = reader.take_if("-");
    const std::int64_t number = reader.expect_number("a number");
    const std::int64_t units = negative ? -number : number;
    if (units < least || units > 0x7FFF) {
        throw ScriptFault{at, std::string(what) + " is out of range (" + std::to_string(least) +
                                  " to 32767)"};
    }
    return static_cast<int>(units);
}

/// Takes the position and size of `window`, a control or a dialog.
void read_rectangle(ScriptReader& reader, auto& window) {
    window.x = expect_units(reader, "position", -0x8000);
    reader.expect(",");
    window.y = expect_units(reader, "position", -0x8000);
    reader.expect(",");
    window.width = expect_units(reader, "size", 0);
    reader.expect(",");
    window.height = expect_units(reader, "size", 0);
}

std::string_view expect_class(ScriptReader& reader) {
    const char* const at = reader.peek().spelling.data();
    const std::string name = reader.expect_text();
    const auto* const known =
        std::find_if(class_names.begin(), class_names.end(), [&](std::string_view class_name) {
            return same_but_for_case(class_name, name);
        });
    if (known == class_names.end()) {
        throw ScriptFault{at, "control class is not known, only Button, Edit, Static, ComboBox, "
                              "msctls_progress32 and msctls_updown32 are"};
    }
    return *known;
}

void read_general_control(ScriptReader& reader, ControlTemplate& control) {
    control.text = reader.expect_text();
    reader.expect(",");
    control.id = expect_control_id(reader);
    reader.expect(",");
    control.class_name = expect_class(reader);
    reader.expect(",");
    control.style = expect_style(reader, control.style);
    reader.expect(",");
    read_rectangle(reader, control);
}

void read_special_control(ScriptReader& reader, const ControlKeyword& keyword,
                          ControlTemplate& control) {
    control.class_name = keyword.class_name;
    control.style |= keyword.style;
    if (keyword.has_text) {
        control.text = reader.expect_text();
        reader.expect(",");
    }
    control.id = expect_control_id(reader);
    reader.expect(",");
    read_rectangle(reader, control);
    if (reader.take_if(",")) {
        control.style = expect_style(reader, control.style);
    }
}

ControlTemplate read_control(ScriptReader& reader) {
    ControlTemplate control;
    control.style = WS_CHILD | WS_VISIBLE;
    if (reader.take_if("CONTROL")) {
        read_general_control(reader, control);
    } else {
        const auto* const known = std::find_if(
            control_keywords.begin(), control_keywords.end(),
            [&](const ControlKeyword& keyword) { return reader.take_if(keyword.keyword); });
        if (known == control_keywords.end()) {
            reader.fail_expected("a control or END");
        }
        read_special_control(reader, *known, control);
    }
    if (reader.take_if(",")) {
        control.ex_style = expect_style(reader, 0);
    }
    return control;
}

/// Weight, slant and character set are taken, but every dialog has the plain face.
void read_font(ScriptReader& reader, DialogTemplate& dialog) {
    const char* const at = reader.peek().spelling.data();
    const DWORD size = reader.expect_number("a font size");
    if (size > 0x7FFF) {
        throw ScriptFault{at, "font size is out of range (0 to 32767)"};
    }
    dialog.font_size = static_cast<int>(size);
    reader.expect(",");
    dialog.font = reader.expect_text();
    for (int extra = 0; extra < 3 && reader.take_if(","); ++extra) {
        reader.expect_number("a number");
    }
}

void read_dialog_options(ScriptReader& reader, DialogTemplate& dialog) {
    DWORD implied = 0;
    dialog.style = WS_POPUP | WS_BORDER | WS_SYSMENU;
    for (;;) {
        skip_options(reader);
        if (reader.take_if("STYLE")) {
            dialog.style = expect_style(reader, 0);
        } else if (reader.take_if("EXSTYLE")) {
            dialog.ex_style = expect_style(reader, 0);
        } else if (reader.take_if("CAPTION")) {
            dialog.caption = reader.expect_text();
            implied |= WS_CAPTION;
        } else if (reader.take_if("FONT")) {
            read_font(reader, dialog);
            implied |= DS_SETFONT;
        } else {
            dialog.style |= implied;
            return;
        }
    }
}

} // namespace

void read_dialog(ScriptReader& reader, ResourceScript& script) {
    const std::size_t offset = reader.offset();
    const WORD id = expect_new_id(reader, script.dialogs, "dialog", "a dialog identifier");
    reader.take(); // the keyword, by which this statement was known
    skip_options(reader);
    auto dialog = std::make_shared<DialogTemplate>();
    read_rectangle(reader, *dialog);
    read_dialog_options(reader, *dialog);
    expect_begin(reader);
    while (!take_end(reader)) {
        dialog->controls.push_back(read_control(reader));
    }
    script.dialogs.emplace(id, DialogEntry{std::move(dialog), offset});
}

} // namespace tarnel
