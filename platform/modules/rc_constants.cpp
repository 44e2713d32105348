#include "platform/modules/rc_constants.h"

#include "platform/base/window_styles.h"

#include <algorithm>
#include <array>

namespace tarnel {

namespace {

struct Constant {
    std::string_view name;
    DWORD value;
};

#define NAMED(constant)                                                                            \
    Constant {                                                                                     \
#constant, static_cast < DWORD>(constant)                                                  \
    }

constexpr std::array constants = {
    NAMED(WS_POPUP),
    NAMED(WS_CHILD),
    NAMED(WS_VISIBLE),
    NAMED(WS_DISABLED),
    NAMED(WS_CAPTION),
    NAMED(WS_BORDER),
    NAMED(WS_DLGFRAME),
    NAMED(WS_VSCROLL),
    NAMED(WS_SYSMENU),
    NAMED(WS_GROUP),
    NAMED(WS_TABSTOP),

    NAMED(WS_EX_NOPARENTNOTIFY),
    NAMED(WS_EX_CONTEXTHELP),

    NAMED(DS_ABSALIGN),
    NAMED(DS_FIXEDSYS),
    NAMED(DS_NOFAILCREATE),
    NAMED(DS_SETFONT),
    NAMED(DS_MODALFRAME),
    NAMED(DS_CONTROL),
    NAMED(DS_CENTER),
    NAMED(DS_CONTEXTHELP),
    NAMED(DS_SHELLFONT),

    NAMED(BS_PUSHBUTTON),
    NAMED(BS_DEFPUSHBUTTON),
    NAMED(BS_CHECKBOX),
    NAMED(BS_AUTOCHECKBOX),
    NAMED(BS_GROUPBOX),

    NAMED(ES_AUTOHSCROLL),

    NAMED(SS_LEFT),

    NAMED(CBS_DROPDOWN),
    NAMED(CBS_DROPDOWNLIST),
    NAMED(CBS_SORT),
    NAMED(CBS_HASSTRINGS),

    NAMED(UDS_WRAP),
    NAMED(UDS_SETBUDDYINT),
    NAMED(UDS_ALIGNRIGHT),
    NAMED(UDS_ALIGNLEFT),
    NAMED(UDS_AUTOBUDDY),
    NAMED(UDS_ARROWKEYS),
    NAMED(UDS_HORZ),
    NAMED(UDS_NOTHOUSANDS),

    NAMED(IDOK),
    NAMED(IDCANCEL),
    NAMED(IDABORT),
    NAMED(IDRETRY),
    NAMED(IDIGNORE),
    NAMED(IDYES),
    NAMED(IDNO),
    NAMED(IDC_STATIC),
};

#undef NAMED

} // namespace

DWORD expect_constant(ScriptReader& reader, std::string_view what) {
    const std::string_view name = reader.peek().spelling;
    const auto* const known =
        std::find_if(constants.begin(), constants.end(),
                     [&](const Constant& constant) { return constant.name == name; });
    if (known == constants.end()) {
        return reader.expect_number(what);
    }
    reader.take();
    return known->value;
}

DWORD expect_style(ScriptReader& reader, DWORD style) {
    std::size_t open = 0;
    do {
        while (reader.take_if("(")) {
            ++open;
        }
        const bool removed = reader.take_if("NOT");
        const DWORD bits = expect_constant(reader, "a style");
        style = removed ? style & ~bits : style | bits;
        while (open > 0 && reader.take_if(")")) {
            --open;
        }
    } while (reader.take_if("|"));
    if (open > 0) {
        reader.expect(")");
    }
    return style;
}

WORD expect_control_id(ScriptReader& reader) {
    const char* const at = reader.peek().spelling.data();
    const bool negative = reader.take_if("-");
    const DWORD value = expect_constant(reader, "a control identifier");
    const DWORD id = negative ? 0U - value : value;
    if (id > 0xFFFF && id != static_cast<DWORD>(IDC_STATIC)) {
        throw ScriptFault{at, "control identifier is out of range (-1 to 65535)"};
    }
    return static_cast<WORD>(id);
}

} // namespace tarnel
