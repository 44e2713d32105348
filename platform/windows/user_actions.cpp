#include "platform/windows/user_actions.h"

#include "platform/messages/message.h"
#include "platform/windows/button.h"
#include "platform/windows/combo_box_window.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/edit.h"
#include "platform/windows/up_down.h"

namespace tarnel {

namespace {

/// The window, where it is of that kind and a person can use it now; else null.
template <typename Kind = Window>
Kind* usable(HWND handle) {
    Window* const window = Window::of(handle);
    return window && window->takes_input() ? dynamic_cast<Kind*>(window) : nullptr;
}

void focus_on(Window& control) {
    if (DialogWindow* const dialog = DialogWindow::around(&control)) {
        dialog->set_focus(control.handle());
    }
}

} // namespace

void user_sees(HWND handle) {
    SendMessageA(handle, WM_PAINT, 0, 0);
}

void user_clicks(HWND handle) {
    Button* const button = usable<Button>(handle);
    if (button && button->takes_clicks()) {
        const Window::InUse in_use(*button);
        focus_on(*button);
        button->click();
    }
}

void user_chooses(HWND handle, int position) {
    if (ComboBoxWindow* const list = usable<ComboBoxWindow>(handle)) {
        const Window::InUse in_use(*list);
        list->choose(position);
    }
}

void user_types(HWND handle, std::string_view text) {
    if (Edit* const edit = usable<Edit>(handle)) {
        const Window::InUse in_use(*edit);
        edit->type(text);
    }
}

void user_steps(HWND handle, int steps) {
    UpDown* const arrows = usable<UpDown>(handle);
    if (arrows && steps != 0) {
        const Window::InUse in_use(*arrows);
        arrows->step(steps);
    }
}

void user_focuses(HWND handle) {
    if (Window* const control = usable(handle)) {
        focus_on(*control);
    }
}

void user_presses(HWND handle, UINT key) {
    if (const DialogWindow* const dialog = usable<DialogWindow>(handle)) {
        const bool to_control = usable(dialog->focus()) != nullptr;
        SendMessageA(to_control ? dialog->focus() : handle, WM_KEYDOWN, key, 0);
    }
}

void user_closes(HWND handle) {
    if (usable(handle)) {
        SendMessageA(handle, WM_CLOSE, 0, 0);
    }
}

void user_answers(HWND handle, int button) {
    if (usable(handle)) {
        SendMessageA(handle, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), 0);
    }
}

} // namespace tarnel
