#include "desktop/WindowSearch.h"

#include "platform/desktop/foreign_windows.h"

#include <string_view>

namespace {

struct WindowSearch {
    HWND found;
    std::string_view text;
    int (*text_of)(HWND window, LPSTR text, int size);
    bool partial;
};

BOOL look_at(HWND window, LPARAM context) {
    auto& search = *reinterpret_cast<WindowSearch*>(context);
    char text[255];
    search.text_of(window, text, sizeof text);
    const std::string_view seen = text;
    if (search.partial ? !seen.starts_with(search.text) : seen != search.text) {
        return TRUE;
    }
    search.found = window;
    return FALSE;
}

HWND find(WindowSearch search) {
    EnumWindows(&look_at, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace

HWND GetWindowFromClass(LPCSTR class_name, int partial) {
    return find({nullptr, class_name, &GetClassNameA, partial != 0});
}

HWND GetWindowFromTitle(LPCSTR title, int partial) {
    return find({nullptr, title, &GetWindowTextA, partial != 0});
}
