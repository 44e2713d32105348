#include "platform/windows/modal_loop.h"

#include "platform/windows/window_state.h"
#include "platform/windows/wnd.h"

namespace tarnel {
namespace {

thread_local constinit HWND innermost_modal = nullptr;

bool is_kept(MSG& message) {
    for (Window* window = Window::of(message.hwnd); window; window = window->parent()) {
        const Window::InUse use(*window);
        if (window->attached() && window->attached()->PreTranslateMessage(&message)) {
            return true;
        }
        if (!Window::of(message.hwnd)) {
            return false; // destroyed by what it has just been offered to
        }
    }
    return false;
}

} // namespace

void translate_and_dispatch(MSG& message) {
    if (!is_kept(message)) {
        DispatchMessageA(&message);
    }
}

bool run_messages_until(bool (*done)(const void* context), const void* context) {
    while (!done(context)) {
        MSG message;
        if (GetMessageA(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        translate_and_dispatch(message);
    }
    return true;
}

HWND modal_window() {
    return innermost_modal;
}

ModalScope::ModalScope(HWND window, HWND owner) : outer_(innermost_modal) {
    innermost_modal = window;
    Window* const above = Window::of(owner);
    if (above && above->is_enabled()) {
        owner_ = owner;
        above->enable(false);
    }
}

void ModalScope::end() {
    if (ended_) {
        return;
    }
    ended_ = true;
    innermost_modal = outer_;
    if (Window* const above = Window::of(owner_)) {
        above->enable(true);
    }
}

} // namespace tarnel
