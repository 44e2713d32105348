#include "net/DelayedMessageWindow.h"

#include "net/ClientSocket.h"

BEGIN_MESSAGE_MAP(CDelayedMessageWindow, CWnd)
ON_MESSAGE(process_delayed, OnProcessDelayed)
ON_MESSAGE(delete_owner, OnDeleteOwner)
ON_MESSAGE(close_owner, OnCloseOwner)
END_MESSAGE_MAP()

CDelayedMessageWindow::CDelayedMessageWindow(CTCPIPSocket* owner) : m_pOwner(owner) {}

CDelayedMessageWindow::~CDelayedMessageWindow() = default;

BOOL CDelayedMessageWindow::Create() {
    return CreateEx(0, AfxRegisterWndClass(0), "Brevan_CDelayedMessageWindow",
                    WS_POPUP | WS_DISABLED, RECT{}, nullptr, 0);
}

// What the owner does may end this object.

LRESULT CDelayedMessageWindow::OnProcessDelayed(WPARAM, LPARAM) {
    m_pOwner->ProcessDelayedMessages();
    return 0;
}

LRESULT CDelayedMessageWindow::OnDeleteOwner(WPARAM, LPARAM) {
    if (!m_pOwner->IsRunning()) {
        delete m_pOwner;
    }
    return 0;
}

LRESULT CDelayedMessageWindow::OnCloseOwner(WPARAM, LPARAM) {
    if (!m_pOwner->IsRunning()) {
        m_pOwner->CloseIfWanted();
    }
    return 0;
}
