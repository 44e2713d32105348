#include "platform/windows/progress_bar.h"

#include "platform/windows/control_messages.h"

#include <algorithm>
#include <utility>

namespace tarnel {

LRESULT ProgressBar::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case PBM_SETRANGE:
        return set_range(LOWORD(lparam), HIWORD(lparam));
    case PBM_SETRANGE32:
        return set_range(static_cast<int>(wparam), static_cast<int>(lparam));
    case PBM_SETPOS:
        return set_position(static_cast<int>(wparam));
    case PBM_GETPOS:
        return position_;
    default:
        return Window::handle_message(message, wparam, lparam);
    }
}

void ProgressBar::describe(ControlView& view) const {
    Window::describe(view);
    view.minimum = minimum_;
    view.maximum = maximum_;
    view.position = position_;
}

/// The old range, packed as PBM_SETRANGE takes it.
LRESULT ProgressBar::set_range(int minimum, int maximum) {
    const LRESULT old = MAKELPARAM(minimum_, maximum_);
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    set_position(position_);
    return old;
}

int ProgressBar::set_position(int position) {
    const int old = std::exchange(position_, std::clamp(position, minimum_, maximum_));
    changed();
    return old;
}

} // namespace tarnel
