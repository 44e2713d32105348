#include "platform/windows/dialog.h"

#include "platform/base/diagnostics.h"
#include "platform/base/exceptions.h"
#include "platform/base/last_error.h"
#include "platform/registry/application.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/modal_loop.h"
#include "platform/windows/ready_presenter.h"

#include <string>
#include <utility>

using tarnel::DialogWindow;
using tarnel::Window;

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_MESSAGE(WM_INITDIALOG, HandleInitDialog)
ON_COMMAND(IDOK, OnOK)
ON_COMMAND(IDCANCEL, OnCancel)
END_MESSAGE_MAP()

/// One modal run, on the stack of DoModal. The dialog's window, and with it the object, may be gone
/// before it ends.
struct CDialog::ModalRun {
    int result = IDABORT;
    bool ended = false;
    bool gone = false; ///< the window, and perhaps the object with it

    static bool is_over(const void* run) { return static_cast<const ModalRun*>(run)->ended; }
};

namespace {

/// Where a dialog goes: its client area as the template says, beside its owner's.
tarnel::NewWindow place(const tarnel::DialogTemplate& what, HWND owner) {
    const RECT frame = tarnel::frame_of(what.style);
    const Window* const above = Window::of(owner);
    const bool on_screen = !above || (what.style & DS_ABSALIGN) != 0;
    const POINT origin = on_screen ? POINT{0, 0} : above->client_origin();
    return {.class_name = DialogWindow::class_of_dialogs,
            .text = what.caption,
            .style = what.style & ~WS_VISIBLE,
            .ex_style = what.ex_style,
            .x = tarnel::pixels_across(what.x) + origin.x,
            .y = tarnel::pixels_down(what.y) + origin.y,
            .width = tarnel::pixels_across(what.width) + frame.left + frame.right,
            .height = tarnel::pixels_down(what.height) + frame.top + frame.bottom,
            .parent = owner,
            .id = 0};
}

/// The owner of a dialog without a parent of its own.
HWND main_window() {
    const CWinApp* const application = AfxGetApp();
    return application && application->m_pMainWnd ? application->m_pMainWnd->m_hWnd : nullptr;
}

DialogWindow* dialog_of(HWND handle) {
    return dynamic_cast<DialogWindow*>(Window::of(handle));
}

bool show(HWND handle) {
    DialogWindow* const dialog = dialog_of(handle);
    if (!dialog) {
        return false;
    }
    const Window::InUse use(*dialog);
    dialog->show(true);
    return dialog->open();
}

} // namespace

CDialog::CDialog(UINT template_id, CWnd* parent) : template_id_(template_id), parent_(parent) {}

CDialog::~CDialog() = default;

BOOL CDialog::Create(UINT template_id, CWnd* parent) {
    const auto what = tarnel::find_dialog(template_id);
    const bool shown = what && (what->style & WS_VISIBLE) != 0;
    if (!what || m_hWnd || (shown && !tarnel::ready_presenter())) {
        return FALSE;
    }
    const HWND window = create_from(*what, parent ? parent->m_hWnd : main_window());
    if (!window) {
        return FALSE;
    }
    if (shown && !show(window)) {
        ::DestroyWindow(window);
        return FALSE;
    }
    return TRUE;
}

HWND CDialog::create_from(const tarnel::DialogTemplate& what, HWND owner) {
    const HWND window = Window::create(place(what, owner), this);
    if (!window) {
        return nullptr;
    }
    SendMessageA(window, WM_SETFONT, 0, 0);
    if (!tarnel::create_controls(what, window)) {
        ::DestroyWindow(window);
        return nullptr;
    }
    const Window* const first = dialog_of(window)->next_stop(nullptr, false);
    const HWND focus = first ? first->handle() : nullptr;
    const bool take_focus =
        SendMessageA(window, WM_INITDIALOG, reinterpret_cast<WPARAM>(focus), 0) != 0;
    if (DialogWindow* const dialog = dialog_of(window); dialog && take_focus) {
        dialog->move_focus(dialog->next_stop(nullptr, false));
    }
    return IsWindow(window) ? window : nullptr;
}

INT_PTR CDialog::DoModal() {
    const auto what = tarnel::find_dialog(template_id_);
    if (!what || m_hWnd || run_ || !tarnel::ready_presenter()) {
        return -1;
    }
    ModalRun run;
    run_ = &run;
    const HWND owner = parent_ ? parent_->m_hWnd : main_window();
    const HWND window = create_from(*what, owner);
    if (!window) {
        if (!run.gone) {
            run_ = nullptr;
        }
        return run.ended ? run.result : -1;
    }
    tarnel::ModalScope scope(window, owner);
    if (!run.ended && !show(window)) {
        run.result = -1;
    } else if (!tarnel::run_messages_until(&ModalRun::is_over, &run)) {
        run.result = IDABORT;
    }
    scope.end();
    if (!run.gone) {
        run_ = nullptr;
        ::DestroyWindow(window);
    }
    return run.result;
}

void CDialog::EndDialog(int result) {
    if (!run_) {
        ShowWindow(SW_HIDE);
        return;
    }
    run_->result = result;
    run_->ended = true;
    PostMessage(
        WM_NULL); // the loop may be waiting: this may run inside a message from another thread
}

BOOL CDialog::OnInitDialog() {
    UpdateData(FALSE);
    return TRUE;
}

LRESULT CDialog::HandleInitDialog(WPARAM, LPARAM) {
    const HWND window = m_hWnd;
    try {
        return OnInitDialog();
    } catch (CException* exception) {
        exception->Delete();
        tarnel::report("dialog " + std::to_string(template_id_) + " cannot be opened");
        ::DestroyWindow(window);
        return FALSE;
    }
}

LRESULT CDialog::WindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCDESTROY && run_) {
        ModalRun& run = *std::exchange(run_, nullptr);
        run.ended = run.gone = true;
        PostMessageA(nullptr, WM_NULL, 0, 0); // for the loop that waits
    }
    return CWnd::WindowProc(message, wparam, lparam);
}

void CDialog::OnOK() {
    if (UpdateData(TRUE)) {
        EndDialog(IDOK);
    }
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}
