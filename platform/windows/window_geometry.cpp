#include "platform/windows/window_state.h"

#include <algorithm>

namespace tarnel {
namespace {

// The frames of a plain desktop at 96 dots an inch. Only differences between them show: a presenter
// draws the frame that its desktop has around the client area.
constexpr LONG border = 1;
constexpr LONG dialog_frame = 3;
constexpr LONG title_bar = 23;

} // namespace

RECT frame_of(DWORD style) {
    if ((style & WS_CAPTION) == WS_CAPTION) {
        return {dialog_frame, dialog_frame + title_bar, dialog_frame, dialog_frame};
    }
    const LONG thickness = (style & WS_BORDER) != 0 ? border : 0;
    return {thickness, thickness, thickness, thickness};
}

RECT Window::screen_rectangle() const {
    const POINT origin = parent_ ? parent_->client_origin() : POINT{0, 0};
    return {rectangle_.left + origin.x, rectangle_.top + origin.y, rectangle_.right + origin.x,
            rectangle_.bottom + origin.y};
}

POINT Window::client_origin() const {
    const RECT outside = screen_rectangle();
    const RECT frame = frame_of(style_);
    return {outside.left + frame.left, outside.top + frame.top};
}

int Window::client_width() const {
    const RECT frame = frame_of(style_);
    return std::max(0, rectangle_.right - rectangle_.left - frame.left - frame.right);
}

int Window::client_height() const {
    const RECT frame = frame_of(style_);
    return std::max(0, rectangle_.bottom - rectangle_.top - frame.top - frame.bottom);
}

void Window::move(const RECT& rectangle) {
    const InUse use(*this);
    const RECT old = rectangle_;
    const int old_width = client_width();
    const int old_height = client_height();
    rectangle_ = {rectangle.left, rectangle.top, std::max(rectangle.left, rectangle.right),
                  std::max(rectangle.top, rectangle.bottom)};
    if (rectangle_ == old) {
        return;
    }
    changed();
    const RECT frame = frame_of(style_);
    if (rectangle_.left != old.left || rectangle_.top != old.top) {
        SendMessageA(handle_, WM_MOVE, 0,
                     MAKELPARAM(rectangle_.left + frame.left, rectangle_.top + frame.top));
    }
    if (client_width() != old_width || client_height() != old_height) {
        SendMessageA(handle_, WM_SIZE, 0, MAKELPARAM(client_width(), client_height()));
    }
}

} // namespace tarnel
