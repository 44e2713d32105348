#pragma once

#include "core/export.h"
#include "platform/windows/dialog.h"

/// Who shows a message box as its owner.
class TARNEL_API mdfMsgBoxHost {
  private:
    /// The window that the box is to stay above; null for none.
    virtual HWND msg_box_host_hwnd() const = 0;

  public:
    virtual ~mdfMsgBoxHost();
};

/// The base of the library's dialogs: the framework's dialog, which is also the owner of the
/// message boxes shown for it.
class TARNEL_API mdfDialog : public CDialog, public mdfMsgBoxHost {
    DECLARE_DYNAMIC(mdfDialog)

    /// On dialog template `template_id`, owned by `parent` or by nobody.
    mdfDialog(unsigned int template_id, CWnd* parent);
    ~mdfDialog() override;

    BOOL PreTranslateMessage(MSG* message) override;

    DECLARE_MESSAGE_MAP()

  private:
    HWND msg_box_host_hwnd() const override;
};
