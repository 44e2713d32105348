#include "platform/windows/dialog_window.h"

#include "platform/windows/control_messages.h"
#include "platform/windows/ready_presenter.h"

#include <algorithm>
#include <utility>

namespace tarnel {
namespace {

/// Posted to itself: however much changes in one turn of the loop, the presenter is told once.
constexpr UINT WM_UPDATE_PRESENTER = 0x0360;

bool is_stop(const Window& control) {
    return (control.style() & WS_TABSTOP) != 0 && control.is_shown() && control.is_enabled();
}

bool is_button(const Window& control, DWORD type) {
    return control.class_name() == "Button" && (control.style() & BS_TYPEMASK) == type;
}

} // namespace

DialogWindow::~DialogWindow() {
    if (presenter_) {
        presenter_->close(handle());
    }
}

DialogWindow* DialogWindow::around(Window* window) {
    while (window && window->parent()) {
        window = window->parent();
    }
    return dynamic_cast<DialogWindow*>(window);
}

void DialogWindow::set_focus(HWND control) {
    focus_ = control;
    changed();
}

Window* DialogWindow::next_stop(HWND from, bool back) const {
    std::vector<Window*> order = children();
    if (back) {
        std::reverse(order.begin(), order.end());
    }
    const auto at = std::find_if(order.begin(), order.end(),
                                 [from](Window* control) { return control->handle() == from; });
    if (at != order.end()) {
        std::rotate(order.begin(), at + 1, order.end());
    }
    const auto stop = std::find_if(order.begin(), order.end(),
                                   [](const Window* control) { return is_stop(*control); });
    return stop != order.end() ? *stop : nullptr;
}

void DialogWindow::move_focus(Window* control) {
    if (!control) {
        return;
    }
    set_focus(control->handle());
    if (control->class_name() == "Edit") {
        SendMessageA(control->handle(), EM_SETSEL, 0, -1);
    }
}

void DialogWindow::handle_key(UINT key) {
    switch (key) {
    case VK_TAB:
        return move_focus(next_stop(focus_, false));
    case VK_RETURN:
        return press_default();
    case VK_ESCAPE:
        return cancel();
    default:
        return;
    }
}

int DialogWindow::default_button() const {
    const auto found =
        std::find_if(children().begin(), children().end(),
                     [](const Window* control) { return is_button(*control, BS_DEFPUSHBUTTON); });
    return found != children().end() ? static_cast<int>((*found)->id()) : 0;
}

/// The button with the focus comes first, then the default button, then OK.
void DialogWindow::press_default() {
    const Window* const focused = Window::of(focus_);
    const bool on_button =
        focused && focused->takes_input() &&
        (is_button(*focused, BS_PUSHBUTTON) || is_button(*focused, BS_DEFPUSHBUTTON));
    if (on_button) {
        SendMessageA(focus_, BM_CLICK, 0, 0);
    } else if (const Window* const button = child(static_cast<UINT>(default_button()))) {
        SendMessageA(button->handle(), BM_CLICK, 0, 0);
    } else {
        send_command(IDOK);
    }
}

void DialogWindow::cancel() {
    const Window* const button = child(IDCANCEL);
    if (!button || button->is_enabled()) {
        send_command(IDCANCEL);
    }
}

void DialogWindow::send_command(int id) {
    const Window* const button = child(static_cast<UINT>(id));
    SendMessageA(handle(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(button ? button->handle() : nullptr));
}

LRESULT DialogWindow::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_CLOSE:
        cancel();
        return 0;
    case WM_NEXTDLGCTL:
        move_focus(LOWORD(lparam) != 0 ? Window::of(reinterpret_cast<HWND>(wparam))
                                       : next_stop(focus_, wparam != 0));
        return 0;
    case WM_UPDATE_PRESENTER:
        update_presenter();
        return 0;
    default:
        return Window::handle_message(message, wparam, lparam);
    }
}

bool DialogWindow::open() {
    if (presenter_) {
        return true;
    }
    auto presenter = ready_presenter();
    if (!presenter || !presenter->open(view())) {
        return false;
    }
    presenter_ = std::move(presenter);
    unshown_.clear();
    return true;
}

void DialogWindow::part_changed(Window& part) {
    if (!presenter_) {
        if (&part == this && is_shown()) {
            open();
        }
        return;
    }
    if (&part != this &&
        std::find(unshown_.begin(), unshown_.end(), part.handle()) == unshown_.end()) {
        unshown_.push_back(part.handle());
    }
    if (!std::exchange(update_posted_, true) &&
        !PostMessageA(handle(), WM_UPDATE_PRESENTER, 0, 0)) {
        update_presenter(); // the queue is full
    }
}

void DialogWindow::update_presenter() {
    update_posted_ = false;
    if (!presenter_) {
        return;
    }
    DialogView changed = view();
    std::erase_if(changed.controls, [this](const ControlView& control) {
        return std::find(unshown_.begin(), unshown_.end(), control.window) == unshown_.end();
    });
    unshown_.clear();
    presenter_->update(changed);
}

DialogView DialogWindow::view() const {
    DialogView all{.window = handle(),
                   .owner = owner() ? owner()->handle() : nullptr,
                   .caption = text(),
                   .width = client_width(),
                   .height = client_height(),
                   .visible = is_shown(),
                   .enabled = is_enabled(),
                   .focus = focus_,
                   .default_button = default_button(),
                   .controls = {}};
    for (const Window* control : children()) {
        control->describe(all.controls.emplace_back());
    }
    return all;
}

bool create_controls(const DialogTemplate& what, HWND dialog) {
    return std::all_of(
        what.controls.begin(), what.controls.end(), [dialog](const ControlTemplate& control) {
            return Window::create({.class_name = control.class_name,
                                   .text = control.text,
                                   .style = control.style | WS_CHILD,
                                   .ex_style = control.ex_style | WS_EX_NOPARENTNOTIFY,
                                   .x = pixels_across(control.x),
                                   .y = pixels_down(control.y),
                                   .width = pixels_across(control.width),
                                   .height = pixels_down(control.height),
                                   .parent = dialog,
                                   .id = control.id},
                                  nullptr) != nullptr;
        });
}

} // namespace tarnel
