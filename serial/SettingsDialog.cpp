#include "serial/SettingsDialog.h"

#include "core/NumberConversion.h"
#include "platform/windows/data_exchange.h"

namespace {

enum Control : int {
    port_list = 544,
    baud_list = 545,
    byte_size_list = 546,
    parity_list = 547,
    stop_bits_list = 548,
    dtr_dsr_check = 549,
    rts_cts_check = 550,
    xon_xoff_check = 551,
    auto_connect_check = 557,
};

constexpr int smallest_byte_size = 5;
constexpr int largest_byte_size = 8;
constexpr int last_listed_port = 10;

} // namespace

CComboBoxFR::CComboBoxFR() = default;

CComboBoxFR::~CComboBoxFR() = default;

BEGIN_MESSAGE_MAP(CComSettingDlg, mdfDialog)
END_MESSAGE_MAP()

CComSettingDlg::CComSettingDlg(CComDeviceConfiguration& configuration, int port_locked,
                               unsigned int template_id, CWnd* parent)
    : mdfDialog(template_id, parent), m_bDtrDsr(configuration.GetDtrDsr()),
      m_bRtsCts(configuration.GetRtsCts()), m_bXonXoff(configuration.GetXonXoff()),
      m_strPort(configuration.m_strPortName), m_bAutoConnect(configuration.m_bConnectOnLoad),
      m_bPortLocked(port_locked), m_dwBaudRate(configuration.m_dwBaudRate),
      m_wParity(configuration.m_wParity), m_wStopBits(configuration.m_wStopBits),
      m_wByteSize(configuration.m_wByteSize), m_pMap(VariousMap::Acquire()),
      m_pConfiguration(&configuration) {}

CComSettingDlg::~CComSettingDlg() {
    m_pMap->Release();
}

void CComSettingDlg::DoDataExchange(CDataExchange* exchange) {
    DDX_Control(exchange, port_list, m_portList);
    DDX_Control(exchange, byte_size_list, m_byteSizeList);
    DDX_Check(exchange, dtr_dsr_check, m_bDtrDsr);
    DDX_Check(exchange, rts_cts_check, m_bRtsCts);
    DDX_Check(exchange, xon_xoff_check, m_bXonXoff);
    DDX_CBString(exchange, port_list, m_strPort);
    DDX_Control(exchange, stop_bits_list, m_stopBitsList);
    DDX_Control(exchange, parity_list, m_parityList);
    DDX_Control(exchange, baud_list, m_baudList);
    DDX_CBString(exchange, baud_list, m_strBaud);
    DDX_CBString(exchange, parity_list, m_strParity);
    DDX_CBString(exchange, byte_size_list, m_strByteSize);
    DDX_CBString(exchange, stop_bits_list, m_strStopBits);
    DDX_Check(exchange, auto_connect_check, m_bAutoConnect);
}

BOOL CComSettingDlg::OnInitDialog() {
    mdfDialog::OnInitDialog(); // binds the lists
    FillLists();
    if (m_bPortLocked) {
        m_portList.EnableWindow(FALSE);
    }
    UpdateData(FALSE);
    return TRUE;
}

void CComSettingDlg::FillLists() {
    m_pMap->m_baudRates.FillComboBox(m_baudList);
    m_strBaud = m_pMap->m_baudRates.FindText(static_cast<int>(m_dwBaudRate));
    m_pMap->m_parities.FillComboBox(m_parityList);
    m_strParity = m_pMap->m_parities.FindText(m_wParity);
    m_pMap->m_stopBits.FillComboBox(m_stopBitsList);
    m_strStopBits = m_pMap->m_stopBits.FindText(m_wStopBits);

    char text[16];
    for (int size = smallest_byte_size; size <= largest_byte_size; ++size) {
        locale_independent::wsprintfA(text, "%d", size);
        m_byteSizeList.AddString(text);
    }
    m_byteSizeList.SetCurSel(m_wByteSize - smallest_byte_size);
    for (int port = 1; port <= last_listed_port; ++port) {
        locale_independent::wsprintfA(text, "COM%d:", port);
        m_portList.AddString(text);
    }
}

void CComSettingDlg::OnOK() {
    mdfDialog::OnOK();
    m_dwBaudRate = static_cast<DWORD>(m_pMap->m_baudRates.FindValue(m_strBaud));
    m_wParity = static_cast<WORD>(m_pMap->m_parities.FindValue(m_strParity));
    m_wStopBits = static_cast<WORD>(m_pMap->m_stopBits.FindValue(m_strStopBits));
    m_wByteSize = static_cast<WORD>(m_byteSizeList.GetCurSel() + smallest_byte_size);
    StoreConfiguration();
}

void CComSettingDlg::StoreConfiguration() {
    m_pConfiguration->SetDtrDsr(m_bDtrDsr);
    m_pConfiguration->SetRtsCts(m_bRtsCts);
    m_pConfiguration->SetXonXoff(m_bXonXoff);
    m_pConfiguration->m_bConnectOnLoad = m_bAutoConnect;
    if (!m_strPort.IsEmpty()) { // a port that the list cannot show stays, unless another is chosen
        m_pConfiguration->m_strPortName = m_strPort;
    }
    m_pConfiguration->m_wParity = m_wParity;
    m_pConfiguration->m_wStopBits = m_wStopBits;
    m_pConfiguration->m_dwBaudRate = m_dwBaudRate;
    m_pConfiguration->m_wByteSize = m_wByteSize;
}

void CComDeviceConfiguration::Edit(int port_locked) {
    CComSettingDlg(*this, port_locked, CComSettingDlg::usual_template, nullptr).DoModal();
}
