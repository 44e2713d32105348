#pragma once

#include "core/dialog.h"

/// The dialog in which a person types the number of the probe to use. Run with DoModal; the arrows
/// step within 1 to 32767, what is typed may be any whole number.
class tbxProbeSelectionDlg : public mdfDialog {
  public:
    explicit tbxProbeSelectionDlg(CWnd* parent);
    ~tbxProbeSelectionDlg() override;

    LONG m_nProbe = 0; ///< preset by the caller, and the answer after OK

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    BOOL OnInitDialog() override;

    DECLARE_MESSAGE_MAP()
};
