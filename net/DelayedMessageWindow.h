#pragma once

#include "core/export.h"
#include "platform/windows/wnd.h"

class CTCPIPSocket;

/// The hidden window through which a socket puts work off to a later turn of its thread's message
/// loop. The socket makes and owns it.
class TARNEL_API CDelayedMessageWindow : public CWnd {
  public:
    static constexpr UINT process_delayed = WM_USER;
    static constexpr UINT delete_owner = WM_USER + 1;
    static constexpr UINT close_owner = WM_USER + 2;

    /// Without a window yet; `owner` outlives the object.
    explicit CDelayedMessageWindow(CTCPIPSocket* owner);
    ~CDelayedMessageWindow() override;

    /// Nonzero on success.
    BOOL Create();

  private:
    LRESULT OnProcessDelayed(WPARAM wparam, LPARAM lparam);
    LRESULT OnDeleteOwner(WPARAM wparam, LPARAM lparam);
    LRESULT OnCloseOwner(WPARAM wparam, LPARAM lparam);

    CTCPIPSocket* const m_pOwner;

    DECLARE_MESSAGE_MAP()
};
