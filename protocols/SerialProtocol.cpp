#include "protocols/SerialProtocol.h"

#include "platform/windows/message_box.h"
#include "serial/SettingsDialog.h"

IMPLEMENT_DYNAMIC(CMMProtocolRS232, _CMMProtocol)

namespace {

constexpr int with_reader = 1;
constexpr int points_in_one_go = 100;

/// One settings dialog at a time, for all serial protocols of the process.
constinit std::atomic<bool> dialog_is_open = false;

class OneDialog {
  public:
    OneDialog() : granted_(!dialog_is_open.exchange(true)) {}

    ~OneDialog() {
        if (granted_) {
            dialog_is_open = false;
        }
    }

    OneDialog(const OneDialog&) = delete;
    OneDialog& operator=(const OneDialog&) = delete;

    bool granted() const { return granted_; }

  private:
    const bool granted_;
};

} // namespace

CMMProtocolRS232::CMMProtocolRS232() = default;

CMMProtocolRS232::~CMMProtocolRS232() {
    m_Device.CloseConnection();
}

void CMMProtocolRS232::Initialize(CWnd* client) {
    const tarnel::SectionGuard guard(m_Lock);
    m_Parse.state = 0;
    m_Parse.value_index = 0;
    m_Parse.point_counter = 0;
    resetString();
    _CMMProtocol::Initialize(client);
    m_Device.SetParent(this);
}

void CMMProtocolRS232::ReadFromRegistry(HKEY key) {
    m_Device.m_Configuration.ReadFromRegistry(key);
    if (m_Device.m_Configuration.GetConnectOnLoad()) {
        m_Device.OpenConnection(with_reader);
    }
}

void CMMProtocolRS232::WriteToRegistry(HKEY key) {
    m_Device.m_Configuration.WriteToRegistry(key);
}

int CMMProtocolRS232::Connect() {
    if (!m_Device.OpenConnection(with_reader)) {
        MessageBoxA(nullptr, "The Connection Failed", GetProtocolName(), MB_OK);
        return 0;
    }
    const tarnel::SectionGuard guard(m_Lock);
    OnPostConnection();
    return 1;
}

int CMMProtocolRS232::Disconnect() {
    return m_Device.CloseConnection();
}

int CMMProtocolRS232::IsConnected() {
    return m_Device.IsConnected();
}

CString CMMProtocolRS232::GetInfoString() {
    CString info;
    info.Format("%s %s %s ", IsConnected() ? "* " : "", GetProtocolName().GetString(),
                m_Device.m_Configuration.GetInfoString().GetString());
    return info;
}

int CMMProtocolRS232::EditProtocolParameters() {
    const OneDialog one;
    if (!one.granted()) {
        return 0;
    }
    CComSettingDlg dialog(m_Device.m_Configuration, m_Device.IsConnected(),
                          CComSettingDlg::usual_template, nullptr);
    if (dialog.DoModal() == IDOK && m_Device.IsConnected()) {
        m_Device.CloseConnection();
        m_Device.OpenConnection(with_reader);
    }
    return 1;
}

void CMMProtocolRS232::OnReceiveChar() {
    for (int taken = 0; taken < points_in_one_go; ++taken) {
        __PointMMT point;
        const int type = ExtractPoint(point);
        if (type != MEASURED_POINT && type != TRACK_POINT) {
            return;
        }
        Store(point, type);
    }
}

void CMMProtocolRS232::Store(const __PointMMT& point, int type) {
    if (m_pObserver) {
        m_pObserver->OnPoint(point, type, m_Device.m_ReadTime);
    }
    const HWND client = GetClientHandle();
    if (type == TRACK_POINT) {
        m_TrackPoint = point;
        if (client) {
            PostTrackPoint(client);
        }
        return;
    }
    m_LastPoint = point;
    if (client && ClaimAnnouncement()) {
        PostMeasuredPoint(client);
    }
}

void CMMProtocolRS232::SetPointObserver(tarnel::PointObserver* observer) {
    const tarnel::SectionGuard guard(m_Lock);
    m_pObserver = observer;
}
