#include "platform/windows/window_state.h"

#include "platform/base/last_error.h"
#include "platform/messages/window.h"
#include "platform/windows/call_object.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/wnd.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarnel {

HWND Window::create(const NewWindow& what, CWnd* object) {
    std::unique_ptr<Window> made = make(what);
    if (!made) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    if (!made->enter_tree(what.parent)) {
        return nullptr;
    }
    Window& window = *made.release(); // the window's from here on
    const InUse use(window);
    const HWND handle = window.handle_;
    if (object) {
        window.object_ = object;
        object->set_window(handle);
    }
    if (!window.send_creation()) {
        DestroyWindow(handle);
    }
    return IsWindow(handle) ? handle : nullptr;
}

Window* Window::of(HWND handle) {
    return static_cast<Window*>(own_window_context(handle, &Window::receive));
}

Window::Window(const NewWindow& what)
    : class_name_(what.class_name), id_(what.id), style_(what.style), ex_style_(what.ex_style),
      text_(what.text), rectangle_{what.x, what.y, what.x + std::max(what.width, 0),
                                   what.y + std::max(what.height, 0)} {}

Window::~Window() {
    for (CWnd* object : {object_, temporary_.get()}) {
        if (object) {
            object->set_window(nullptr);
        }
    }
}

bool Window::enter_tree(HWND parent) {
    Window* above = of(parent);
    if ((style_ & WS_CHILD) != 0) {
        if (!above) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return false;
        }
        parent_ = above;
    } else {
        owner_ = above;
    }
    handle_ = create_window(&Window::receive, this, parent_ ? parent : nullptr, &Window::abandon);
    if (handle_ && above) {
        (parent_ ? above->children_ : above->owned_).push_back(this);
    }
    return handle_ != nullptr;
}

void Window::leave_tree() {
    if (parent_) {
        std::erase(parent_->children_, this);
    }
    if (owner_) {
        std::erase(owner_->owned_, this);
    }
    for (Window* owned : std::exchange(owned_, {})) {
        owned->owner_ = nullptr;
    }
}

bool Window::send_creation() {
    const auto send = [this](UINT message, WPARAM wparam, LPARAM lparam) {
        return SendMessageA(handle_, message, wparam, lparam);
    };
    if (!send(WM_NCCREATE, 0, 0)) {
        return false;
    }
    send(WM_NCCALCSIZE, 0, 0);
    if (send(WM_CREATE, 0, 0) == -1) {
        return false;
    }
    send(WM_SIZE, 0, MAKELPARAM(client_width(), client_height()));
    const RECT frame = frame_of(style_);
    send(WM_MOVE, 0, MAKELPARAM(rectangle_.left + frame.left, rectangle_.top + frame.top));
    return true;
}

LRESULT Window::receive(void* context, HWND, UINT message, WPARAM wparam, LPARAM lparam) {
    Window& window = *static_cast<Window*>(context);
    const InUse use(window);
    if (message == WM_DESTROY) {
        window.destroy_owned();
    }
    const LRESULT result = window.object_ ? call_object(*window.object_, message, wparam, lparam)
                                          : window.handle_message(message, wparam, lparam);
    if (message == WM_NCDESTROY) {
        window.end();
    }
    return result;
}

/// Without a message: the thread has ended, and nothing of the tree is used any more.
void Window::abandon(void* context) {
    delete static_cast<Window*>(context);
}

void Window::destroy_owned() {
    while (!owned_.empty()) {
        Window* const owned = owned_.back();
        if (!DestroyWindow(owned->handle_)) { // it is being destroyed already
            std::erase(owned_, owned);
            owned->owner_ = nullptr;
        }
    }
}

void Window::end() {
    leave_tree();
    ended_ = true;
    if (CWnd* const object = std::exchange(object_, nullptr)) {
        object->set_window(nullptr);
        object->PostNcDestroy(); // which may delete it
    }
}

Window* Window::child(UINT id) const {
    const auto found = std::find_if(children_.begin(), children_.end(),
                                    [id](const Window* child) { return child->id_ == id; });
    return found != children_.end() ? *found : nullptr;
}

CWnd& Window::object() {
    if (object_) {
        return *object_;
    }
    if (!temporary_) {
        temporary_ = std::make_unique<CWnd>();
        temporary_->set_window(handle_);
    }
    return *temporary_;
}

void Window::set_text(std::string text) {
    text_ = std::move(text);
    changed();
}

LRESULT Window::copy_text(WPARAM size, LPARAM buffer) const {
    if (size == 0) {
        return 0;
    }
    const std::size_t length = std::min<std::size_t>(text_.size(), size - 1);
    char* const target = reinterpret_cast<char*>(buffer);
    std::memcpy(target, text_.data(), length);
    target[length] = '\0';
    return static_cast<LRESULT>(length);
}

bool Window::is_visible() const {
    return is_shown() && (!parent_ || parent_->is_visible());
}

bool Window::takes_input() const {
    return is_shown() && is_enabled() && (!parent_ || parent_->takes_input());
}

void Window::show(bool visible) {
    if (visible == is_shown()) {
        return;
    }
    const InUse use(*this);
    SendMessageA(handle_, WM_SHOWWINDOW, visible, 0);
    style_ = visible ? style_ | WS_VISIBLE : style_ & ~WS_VISIBLE;
    changed();
}

void Window::enable(bool enabled) {
    if (enabled == is_enabled()) {
        return;
    }
    const InUse use(*this);
    style_ = enabled ? style_ & ~WS_DISABLED : style_ | WS_DISABLED;
    changed();
    SendMessageA(handle_, WM_ENABLE, enabled, 0);
}

LRESULT Window::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_NCCREATE:
        return TRUE;
    case WM_SETTEXT:
        set_text(lparam ? reinterpret_cast<LPCSTR>(lparam) : "");
        return TRUE;
    case WM_GETTEXT:
        return copy_text(wparam, lparam);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(text_.size());
    case WM_CLOSE:
        DestroyWindow(handle_);
        return 0;
    case WM_KEYDOWN:
        if (DialogWindow* const dialog = DialogWindow::around(this)) {
            dialog->handle_key(static_cast<UINT>(wparam));
        }
        return 0;
    default:
        return 0;
    }
}

void Window::describe(ControlView& view) const {
    view.window = handle_;
    view.id = id_;
    view.class_name = class_name_;
    view.text = text_;
    view.style = style_;
    view.rectangle = rectangle_;
    view.visible = is_shown();
    view.enabled = is_enabled();
}

void Window::changed() {
    if (ended_) {
        return;
    }
    Window* top = this;
    while (top->parent_) {
        top = top->parent_;
    }
    top->part_changed(*this);
}

void Window::part_changed(Window&) {}

void Window::notify_parent(WORD code) {
    if (parent_) {
        SendMessageA(parent_->handle_, WM_COMMAND, MAKEWPARAM(static_cast<int>(id_), code),
                     reinterpret_cast<LPARAM>(handle_));
    }
}

} // namespace tarnel
