#pragma once

#include "core/dialog.h"
#include "core/resource_scope.h"
#include "platform/windows/combo_box.h"
#include "serial/PortConfiguration.h"

/// A drop-down list, as the settings dialog uses it.
class TARNEL_API CComboBoxFR : public CComboBox {
  public:
    CComboBoxFR();
    ~CComboBoxFR() override;
};

/// The dialog "Serial Port Configuration", which edits one configuration in place: OK writes every
/// field back, Cancel none. Nothing is validated. Run with DoModal on the application's thread; the
/// configuration outlives the dialog.
class TARNEL_API CComSettingDlg : public mdfDialog {
  public:
    static constexpr unsigned int usual_template = 12501;
    static constexpr unsigned int alternative_template = 12502;

    /// With `port_locked` nonzero the port is shown, but cannot be chosen.
    CComSettingDlg(CComDeviceConfiguration& configuration, int port_locked,
                   unsigned int template_id, CWnd* parent);
    ~CComSettingDlg() override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    BOOL OnInitDialog() override;

    DECLARE_MESSAGE_MAP()

    void OnOK() override;

  private:
    void FillLists();
    void StoreConfiguration();

    CLocaleResourceScope m_ResourceScope; ///< the dialog speaks the user's language all its life
    CComboBox m_portList;
    CComboBox m_byteSizeList;
    int m_bDtrDsr;
    int m_bRtsCts;
    int m_bXonXoff;
    CString m_strPort;
    int m_bAutoConnect;
    int m_bPortLocked;
    DWORD m_dwBaudRate;
    CComboBoxFR m_baudList;
    CString m_strBaud;
    WORD m_wParity;
    CComboBoxFR m_parityList;
    CString m_strParity;
    WORD m_wStopBits;
    CComboBoxFR m_stopBitsList;
    CString m_strStopBits;
    WORD m_wByteSize;
    CString m_strByteSize; ///< exchanged, but the list's position counts
    VariousMap* m_pMap;
    CComDeviceConfiguration* m_pConfiguration;
};
