#include "platform/windows/button.h"

namespace tarnel {

bool Button::takes_clicks() const {
    return type() != BS_GROUPBOX && takes_input();
}

void Button::click() {
    if (!takes_clicks()) {
        return;
    }
    if (type() == BS_AUTOCHECKBOX) {
        set_check(check_ == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED);
    }
    notify_parent(BN_CLICKED);
}

LRESULT Button::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case BM_GETCHECK:
        return check_;
    case BM_SETCHECK:
        set_check(static_cast<int>(wparam));
        return 0;
    case BM_CLICK:
        click();
        return 0;
    case WM_KEYDOWN:
        if (wparam == VK_SPACE) {
            click();
            return 0;
        }
        break;
    default:
        break;
    }
    return Window::handle_message(message, wparam, lparam);
}

void Button::describe(ControlView& view) const {
    Window::describe(view);
    view.check = check_;
}

void Button::set_check(int check) {
    const bool has_check = type() == BS_CHECKBOX || type() == BS_AUTOCHECKBOX;
    if (has_check && check >= BST_UNCHECKED && check <= BST_INDETERMINATE) {
        check_ = check;
        changed();
    }
}

} // namespace tarnel
