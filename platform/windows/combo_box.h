#pragma once

#include "platform/base/export.h"
#include "platform/windows/wnd.h"

/// The framework's object for a drop-down list. Positions count from 0; CB_ERR (-1) stands for none
/// and for failure.
class TARNEL_PLATFORM_API CComboBox : public CWnd {
    DECLARE_DYNAMIC(CComboBox)

    /// The position of the new entry.
    int AddString(LPCSTR text);

    int GetCount() const;
    int GetCurSel() const;

    /// Tells nobody; the new position. Where there is no such entry, none is selected.
    int SetCurSel(int position);

    /// Empty where there is no such entry.
    void GetLBText(int position, CString& text) const;
};
