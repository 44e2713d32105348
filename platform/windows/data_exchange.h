#pragma once

#include "platform/base/export.h"
#include "platform/windows/wnd.h"

// Exchange between the fields of a dialog and its controls, one line a field, the same lines in
// both directions. Called in DoDataExchange alone.

class TARNEL_PLATFORM_API CDataExchange {
  public:
    CDataExchange(CWnd* dialog, BOOL save) : m_bSaveAndValidate(save), m_pDlgWnd(dialog) {}

    /// The control, which Fail() will point to. Throws CNotSupportedException when it is missing.
    HWND PrepareCtrl(int id);

    /// Ends the exchange: the control last prepared gets the focus, with its text selected.
    [[noreturn]] void Fail();

    const BOOL m_bSaveAndValidate; ///< nonzero: from the controls to the fields
    CWnd* const m_pDlgWnd;

  private:
    HWND last_control_ = nullptr;
};

/// Makes `member` the object of the control, at the first exchange.
TARNEL_PLATFORM_API void DDX_Control(CDataExchange* exchange, int id, CWnd& member);

/// The state of a check box, 0 to 2; another value is shown as 0.
TARNEL_PLATFORM_API void DDX_Check(CDataExchange* exchange, int id, int& value);

/// The text of a drop-down list's selected entry, empty for none. To the control: selects the first
/// entry that begins with the text, in any case; where none does, the selection stays.
TARNEL_PLATFORM_API void DDX_CBString(CDataExchange* exchange, int id, CString& text);

/// A whole number in an edit box, in 32 bits; one beyond them is cut to the nearest. Anything else
/// is answered by the prompt to enter an integer, and the exchange ends.
TARNEL_PLATFORM_API void DDX_Text(CDataExchange* exchange, int id, LONG& value);
