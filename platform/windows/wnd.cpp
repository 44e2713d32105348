#include "platform/windows/wnd.h"

#include "platform/base/exceptions.h"
#include "platform/windows/data_exchange.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/window_state.h"

#include <string>
#include <utility>

using tarnel::Window;

IMPLEMENT_DYNAMIC(CWnd, CObject)

namespace {

bool fits(const AFX_MSGMAP_ENTRY& entry, UINT message, WPARAM wparam) {
    if (message != (entry.registered ? *entry.registered : entry.message)) {
        return false;
    }
    return message != WM_COMMAND || (LOWORD(wparam) == entry.id && HIWORD(wparam) == entry.code);
}

/// The first entry that fits, in the tables of the class and its bases.
const AFX_MSGMAP_ENTRY* find_entry(const AFX_MSGMAP* map, UINT message, WPARAM wparam) {
    for (; map; map = map->base ? map->base() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->entries; entry->handle; ++entry) {
            if (fits(*entry, message, wparam)) {
                return entry;
            }
        }
    }
    return nullptr;
}

void shift(RECT& rectangle, LONG across, LONG down) {
    rectangle = {rectangle.left + across, rectangle.top + down, rectangle.right + across,
                 rectangle.bottom + down};
}

} // namespace

CWnd::CWnd() = default;

CWnd::~CWnd() {
    Window* const window = Window::of(m_hWnd);
    if (window && window->attached() == this) {
        window->attach(nullptr);
        ::DestroyWindow(window->handle());
    }
}

CWnd* CWnd::FromHandle(HWND handle) {
    Window* const window = Window::of(handle);
    return window ? &window->object() : nullptr;
}

BOOL CWnd::CreateEx(DWORD ex_style, LPCSTR class_name, LPCSTR text, DWORD style,
                    const RECT& rectangle, CWnd* parent, UINT id) {
    const tarnel::NewWindow what{.class_name = class_name,
                                 .text = text ? text : "",
                                 .style = style,
                                 .ex_style = ex_style,
                                 .x = rectangle.left,
                                 .y = rectangle.top,
                                 .width = rectangle.right - rectangle.left,
                                 .height = rectangle.bottom - rectangle.top,
                                 .parent = parent ? parent->m_hWnd : nullptr,
                                 .id = id};
    return !m_hWnd && Window::create(what, this) != nullptr;
}

BOOL CWnd::DestroyWindow() {
    return ::DestroyWindow(m_hWnd);
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd* dialog) {
    Window* const parent = Window::of(dialog->m_hWnd);
    Window* const control = parent ? parent->child(id) : nullptr;
    if (!control || m_hWnd || control->attached()) {
        return FALSE;
    }
    control->attach(this);
    set_window(control->handle());
    return TRUE;
}

CWnd* CWnd::GetParent() const {
    const Window* const window = Window::of(m_hWnd);
    if (!window) {
        return nullptr;
    }
    Window* const above = window->parent() ? window->parent() : window->owner();
    return above ? &above->object() : nullptr;
}

CWnd* CWnd::GetDlgItem(int id) const {
    const Window* const window = Window::of(m_hWnd);
    Window* const control = window ? window->child(static_cast<UINT>(id)) : nullptr;
    return control ? &control->object() : nullptr;
}

int CWnd::GetDlgCtrlID() const {
    const Window* const window = Window::of(m_hWnd);
    return window ? static_cast<int>(window->id()) : 0;
}

DWORD CWnd::GetStyle() const {
    const Window* const window = Window::of(m_hWnd);
    return window ? window->style() : 0;
}

void CWnd::SetWindowText(LPCSTR text) {
    SendMessage(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
}

void CWnd::GetWindowText(CString& text) const {
    const auto length = static_cast<std::size_t>(SendMessage(WM_GETTEXTLENGTH));
    std::string buffer(length + 1, '\0');
    SendMessage(WM_GETTEXT, buffer.size(), reinterpret_cast<LPARAM>(buffer.data()));
    text = buffer.c_str();
}

BOOL CWnd::ShowWindow(int command) {
    Window* const window = Window::of(m_hWnd);
    if (!window) {
        return FALSE;
    }
    const bool before = window->is_shown();
    window->show(command != SW_HIDE);
    return before;
}

BOOL CWnd::IsWindowVisible() const {
    const Window* const window = Window::of(m_hWnd);
    return window && window->is_visible();
}

BOOL CWnd::EnableWindow(BOOL enable) {
    Window* const window = Window::of(m_hWnd);
    if (!window) {
        return FALSE;
    }
    const bool before = window->is_enabled();
    window->enable(enable != FALSE);
    return !before;
}

BOOL CWnd::IsWindowEnabled() const {
    const Window* const window = Window::of(m_hWnd);
    return window && window->is_enabled();
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL repaint) {
    MoveWindow({x, y, x + width, y + height}, repaint);
}

void CWnd::MoveWindow(const RECT& rectangle, BOOL) {
    if (Window* const window = Window::of(m_hWnd)) {
        window->move(rectangle);
    }
}

void CWnd::GetWindowRect(RECT* rectangle) const {
    if (const Window* const window = Window::of(m_hWnd)) {
        *rectangle = window->screen_rectangle();
    }
}

void CWnd::GetClientRect(RECT* rectangle) const {
    if (const Window* const window = Window::of(m_hWnd)) {
        *rectangle = {0, 0, window->client_width(), window->client_height()};
    }
}

void CWnd::ScreenToClient(RECT* rectangle) const {
    if (const Window* const window = Window::of(m_hWnd)) {
        const POINT origin = window->client_origin();
        shift(*rectangle, -origin.x, -origin.y);
    }
}

void CWnd::ClientToScreen(RECT* rectangle) const {
    if (const Window* const window = Window::of(m_hWnd)) {
        const POINT origin = window->client_origin();
        shift(*rectangle, origin.x, origin.y);
    }
}

void CWnd::Invalidate(BOOL) {
    if (Window* const window = Window::of(m_hWnd)) {
        window->changed();
    }
}

void CWnd::SetFocus() {
    if (auto* const dialog = tarnel::DialogWindow::around(Window::of(m_hWnd))) {
        dialog->set_focus(m_hWnd);
    }
}

BOOL CWnd::UpdateData(BOOL save) {
    CDataExchange exchange(this, save);
    try {
        DoDataExchange(&exchange);
        return TRUE;
    } catch (CUserException* told) {
        told->Delete();
        return FALSE;
    }
}

BOOL CWnd::PreTranslateMessage(MSG*) {
    return FALSE;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
    const AFX_MSGMAP_ENTRY* const entry = find_entry(GetMessageMap(), message, wparam);
    return entry ? entry->handle(*this, wparam, lparam) : DefWindowProc(message, wparam, lparam);
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static constexpr AFX_MSGMAP_ENTRY entries[] = {{0, nullptr, 0, 0, nullptr}};
    static constexpr AFX_MSGMAP map = {nullptr, entries};
    return &map;
}

const AFX_MSGMAP* CWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
    Window* const window = Window::of(m_hWnd);
    return window ? window->handle_message(message, wparam, lparam) : 0;
}

void CWnd::DoDataExchange(CDataExchange*) {}

void CWnd::PostNcDestroy() {}

void CWnd::OnSize(UINT type, int width, int height) {
    DefWindowProc(WM_SIZE, type, MAKELPARAM(width, height));
}
