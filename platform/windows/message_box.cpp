#include "platform/windows/message_box.h"

#include "platform/base/diagnostics.h"
#include "platform/messages/window.h"
#include "platform/registry/application.h"
#include "platform/windows/message_box_window.h"
#include "platform/windows/modal_loop.h"
#include "platform/windows/ready_presenter.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarnel {
namespace {

/// The buttons of each type, 0 where there are fewer.
constexpr std::array<std::array<int, 3>, 6> buttons_of_type = {{
    {IDOK},
    {IDOK, IDCANCEL},
    {IDABORT, IDRETRY, IDIGNORE},
    {IDYES, IDNO, IDCANCEL},
    {IDYES, IDNO},
    {IDRETRY, IDCANCEL},
}};

bool is_type(DWORD type) {
    return (type & MB_TYPEMASK) < buttons_of_type.size();
}

bool has_button(DWORD type, int button) {
    if (button == 0 || !is_type(type)) {
        return false;
    }
    const auto& buttons = buttons_of_type[type & MB_TYPEMASK];
    return std::find(buttons.begin(), buttons.end(), button) != buttons.end();
}

/// What closing the box by its frame means; 0 where a real answer is wanted.
int answer_of_closing(DWORD type) {
    if (has_button(type, IDCANCEL)) {
        return IDCANCEL;
    }
    return (type & MB_TYPEMASK) == MB_OK ? IDOK : 0;
}

HWND owner_of_box(HWND wanted) {
    Window* owner = Window::of(wanted ? wanted : modal_window());
    while (owner && owner->parent()) {
        owner = owner->parent();
    }
    return owner ? owner->handle() : nullptr;
}

/// Nobody sees the box: the text must not be lost with it.
int report_message(const std::string& message, const std::string& caption) {
    std::string line = caption + ": " + message;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    report(line);
    return 0;
}

/// Null for a type that there is not.
HWND create_box(HWND owner, const std::string& caption, UINT type) {
    if (!is_type(type)) {
        return nullptr;
    }
    NewWindow what;
    what.class_name = MessageBoxWindow::class_of_boxes;
    what.text = caption;
    what.style = WS_POPUP | WS_CAPTION | WS_VISIBLE | LOWORD(type);
    what.parent = owner;
    return Window::create(what, nullptr);
}

/// A box as long as it asks, however that ends.
struct OpenBox {
    explicit OpenBox(MessageBoxWindow& box) : window(box), in_use(box) {}

    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

    ~OpenBox() { DestroyWindow(window.handle()); }

    MessageBoxWindow& window;
    const Window::InUse in_use;
};

int wait_for_answer(const MessageBoxWindow& box, HWND owner) {
    const auto is_over = [](const void* waiting) {
        return static_cast<const MessageBoxWindow*>(waiting)->is_over();
    };
    const ModalScope modal(box.handle(), owner); // ends before the box does
    run_messages_until(is_over, &box);
    return box.answer();
}

} // namespace

bool MessageBoxWindow::ask(const std::string& message) {
    auto presenter = ready_presenter();
    const HWND above = owner() ? owner()->handle() : nullptr;
    if (!presenter || !presenter->ask({handle(), above, text(), message, LOWORD(style())})) {
        return false;
    }
    presenter_ = std::move(presenter);
    return true;
}

LRESULT MessageBoxWindow::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_COMMAND:
        press(LOWORD(wparam));
        return 0;
    case WM_CLOSE:
        press(answer_of_closing(style()));
        return 0;
    case WM_DESTROY:
        leave();
        return 0;
    default:
        return Window::handle_message(message, wparam, lparam);
    }
}

void MessageBoxWindow::press(int button) {
    if (answer_ == 0 && has_button(style(), button)) {
        answer_ = button;
        PostMessageA(handle(), WM_NULL, 0, 0); // a sent message does not wake who waits
    }
}

void MessageBoxWindow::leave() {
    if (!is_over()) {
        PostMessageA(nullptr, WM_NULL, 0, 0); // what is posted for the box goes with it
    }
    gone_ = true;
    if (presenter_) {
        presenter_->close(handle());
    }
}

int show_message(HWND owner, const std::string& message, const std::string& caption, UINT type) {
    const HWND above = owner_of_box(owner);
    const HWND box = create_box(above, caption, type);
    if (!box) {
        return report_message(message, caption);
    }
    const OpenBox open(static_cast<MessageBoxWindow&>(*Window::of(box)));
    return open.window.ask(message) ? wait_for_answer(open.window, above)
                                    : report_message(message, caption);
}

int show_message_of_application(HWND owner, const std::string& message, UINT type) {
    const CWinApp* const application = AfxGetApp();
    const bool named = application && application->m_pszProfileName;
    return show_message(owner, message, named ? application->m_pszProfileName : executable_name(),
                        (type & MB_ICONMASK) != 0 ? type : type | MB_ICONEXCLAMATION);
}

} // namespace tarnel

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    return tarnel::show_message(owner, text ? text : "", caption ? caption : "", type);
}

int AfxMessageBox(LPCSTR text, UINT type, UINT) {
    return tarnel::show_message_of_application(nullptr, text ? text : "", type);
}
