#pragma once

#include "platform/base/object.h"
#include "platform/base/string.h"
#include "platform/base/window_styles.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/windows/message_map.h"

class CDataExchange;

namespace tarnel {
class Window;
}

constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOWNOACTIVATE = 4;
constexpr int SW_SHOW = 5;

constexpr UINT SIZE_RESTORED = 0;

/// The framework's object for a window. It is used on the window's thread alone; of the functions
/// below, those that need a window fail without one, or change nothing. The object belongs to
/// who made it and outlives its window; its destructor destroys a window that is left, without
/// handlers of derived classes.
class TARNEL_PLATFORM_API CWnd : public CObject {
    DECLARE_DYNAMIC(CWnd)

    CWnd();
    ~CWnd() override;

    /// The object of a window of the calling thread: the attached one, else one that lives as long
    /// as the window. Null for any other window.
    static CWnd* FromHandle(HWND window);

    /// Makes a window of a registered class (AfxRegisterWndClass) or of a standard control class.
    /// `parent` is its parent with WS_CHILD, else its owner, or null.
    BOOL CreateEx(DWORD ex_style, LPCSTR class_name, LPCSTR text, DWORD style,
                  const RECT& rectangle, CWnd* parent, UINT id);

    virtual BOOL DestroyWindow();

    /// Makes this the object of `dialog`'s control `id`.
    BOOL SubclassDlgItem(UINT id, CWnd* dialog);

    /// `m_hWnd`, for any thread.
    HWND GetSafeHwnd() const { return __atomic_load_n(&m_hWnd, __ATOMIC_ACQUIRE); }

    CWnd* GetParent() const;

    /// Null when there is no such control; valid as long as the control.
    CWnd* GetDlgItem(int id) const;
    int GetDlgCtrlID() const;
    DWORD GetStyle() const;

    void SetWindowText(LPCSTR text);
    void GetWindowText(CString& text) const;

    /// Nonzero when it was visible before.
    BOOL ShowWindow(int command);

    /// Whether it and all its parents are to be seen.
    BOOL IsWindowVisible() const;

    /// Nonzero when it was disabled before.
    BOOL EnableWindow(BOOL enable = TRUE);
    BOOL IsWindowEnabled() const;

    /// In pixels with the frame, on the screen or in the parent's client area; a window whose
    /// client area becomes another size gets WM_SIZE before this returns.
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(const RECT& rectangle, BOOL repaint = TRUE);

    /// With the frame, on the screen.
    void GetWindowRect(RECT* rectangle) const;
    void GetClientRect(RECT* rectangle) const;
    void ScreenToClient(RECT* rectangle) const;
    void ClientToScreen(RECT* rectangle) const;

    /// Has the window shown anew. What has changed is always shown; this asks for all of it.
    void Invalidate(BOOL erase = TRUE);

    void SetFocus();

    LRESULT SendMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
        return SendMessageA(m_hWnd, message, wparam, lparam);
    }

    BOOL PostMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
        return PostMessageA(m_hWnd, message, wparam, lparam);
    }

    /// Transfers between the fields and the controls, to the fields with `save`; FALSE when a field
    /// could not be taken from its control.
    BOOL UpdateData(BOOL save = TRUE);

    /// Sees each message for the window or one of its children before it is dispatched; nonzero
    /// keeps it. Called by the loops of this layer (modal dialogs, waits with messages).
    virtual BOOL PreTranslateMessage(MSG* message);

    /// Handles every message of the window: by the table, else DefWindowProc.
    virtual LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam);

    HWND m_hWnd = nullptr; ///< null without a window

  protected:
    friend class tarnel::Window;

    void set_window(HWND window) { __atomic_store_n(&m_hWnd, window, __ATOMIC_RELEASE); }

    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;

    /// What the window's class does with a message.
    virtual LRESULT DefWindowProc(UINT message, WPARAM wparam, LPARAM lparam);

    virtual void DoDataExchange(CDataExchange* exchange);

    /// The window is gone; an object that nobody else owns deletes itself here.
    virtual void PostNcDestroy();

    /// Hands the message on to DefWindowProc.
    void OnSize(UINT type, int width, int height);
};

/// The name of a class for windows without behaviour of their own; all arguments must be 0.
TARNEL_PLATFORM_API LPCSTR AfxRegisterWndClass(UINT style, void* cursor = nullptr,
                                               void* brush = nullptr, void* icon = nullptr);
