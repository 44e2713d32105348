#pragma once

#include "platform/windows/wnd.h"

namespace tarnel {
struct DialogTemplate;
}

/// The framework's dialog on a template of a resource script. The template is taken from the
/// calling thread's current resource handle, else from the chain of extension libraries, when the
/// window is made.
class TARNEL_PLATFORM_API CDialog : public CWnd {
    DECLARE_DYNAMIC(CDialog)

    /// `parent` becomes the owner, which is disabled while the dialog runs modally.
    explicit CDialog(UINT template_id, CWnd* parent = nullptr);
    ~CDialog() override;

    /// Makes the window without running it. FALSE when the template is missing, the window cannot
    /// be made, or nobody can show it.
    BOOL Create(UINT template_id, CWnd* parent = nullptr);

    /// Runs the dialog until it is ended, dispatching all messages of the thread meanwhile, and
    /// destroys its window. What EndDialog was given; -1 when the template is missing, the window
    /// cannot be made or nobody can show it; IDABORT when the run was broken off. WM_QUIT breaks it
    /// off and is posted again.
    virtual INT_PTR DoModal();

    /// Ends the modal run with `result` once the handler that runs has returned; a dialog that does
    /// not run modally is hidden.
    void EndDialog(int result);

    /// Transfers the fields to the controls. Nonzero: the first control gets the focus. An
    /// exception that leaves it ends the creation.
    virtual BOOL OnInitDialog();

    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override;

  protected:
    /// Transfers the controls to the fields and ends with IDOK; stays open when a field cannot be
    /// taken.
    virtual void OnOK();

    /// Ends with IDCANCEL.
    virtual void OnCancel();

    DECLARE_MESSAGE_MAP()

  private:
    struct ModalRun;

    LRESULT HandleInitDialog(WPARAM focus, LPARAM);
    HWND create_from(const tarnel::DialogTemplate& what, HWND owner);

    const UINT template_id_;
    CWnd* const parent_;
    ModalRun* run_ = nullptr; ///< while it runs modally
};
