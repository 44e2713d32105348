#include "core/dialog.h"

IMPLEMENT_DYNAMIC(mdfDialog, CDialog)

BEGIN_MESSAGE_MAP(mdfDialog, CDialog)
END_MESSAGE_MAP()

mdfMsgBoxHost::~mdfMsgBoxHost() = default;

mdfDialog::mdfDialog(unsigned int template_id, CWnd* parent) : CDialog(template_id, parent) {}

mdfDialog::~mdfDialog() = default;

BOOL mdfDialog::PreTranslateMessage(MSG* message) {
    return CDialog::PreTranslateMessage(message);
}

HWND mdfDialog::msg_box_host_hwnd() const {
    return m_hWnd;
}
