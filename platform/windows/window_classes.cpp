#include "platform/base/last_error.h"
#include "platform/base/letter_case.h"
#include "platform/windows/button.h"
#include "platform/windows/combo_box_window.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/edit.h"
#include "platform/windows/message_box_window.h"
#include "platform/windows/progress_bar.h"
#include "platform/windows/up_down.h"
#include "platform/windows/wnd.h"

#include <memory>
#include <string_view>

namespace tarnel {

std::unique_ptr<Window> make_plain_window(const NewWindow& what) {
    return std::unique_ptr<Window>(new Window(what));
}

namespace {

template <typename Class>
std::unique_ptr<Window> make_window(const NewWindow& what) {
    return std::make_unique<Class>(what);
}

struct WindowClass {
    const char* name;
    std::unique_ptr<Window> (*make)(const NewWindow& what);
};

constexpr const char* class_without_behaviour = "Afx:0";

constexpr WindowClass window_classes[] = {
    {"Button", make_window<Button>},
    {"ComboBox", make_window<ComboBoxWindow>},
    {"Edit", make_window<Edit>},
    {"Static", make_plain_window},
    {"msctls_progress32", make_window<ProgressBar>},
    {"msctls_updown32", make_window<UpDown>},
    {DialogWindow::class_of_dialogs, make_window<DialogWindow>},
    {MessageBoxWindow::class_of_boxes, make_window<MessageBoxWindow>},
    {class_without_behaviour, make_plain_window},
};

} // namespace

/// Names go in any case; the window bears the one of the table.
std::unique_ptr<Window> Window::make(const NewWindow& what) {
    for (const WindowClass& known : window_classes) {
        if (same_but_for_case(known.name, what.class_name)) {
            NewWindow named = what;
            named.class_name = known.name;
            return known.make(named);
        }
    }
    return nullptr;
}

} // namespace tarnel

LPCSTR AfxRegisterWndClass(UINT style, void* cursor, void* brush, void* icon) {
    if (style != 0 || cursor || brush || icon) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return tarnel::class_without_behaviour;
}
