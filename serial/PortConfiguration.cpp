#include "serial/PortConfiguration.h"

#include "platform/companions/registry_key.h"
#include "platform/registry/application.h"

namespace {

int read_setting(const CRegistryKey& key, LPCSTR name, const CComConfSection& list, int value) {
    return list.FindValue(key.GetValue(name, list.FindText(value)));
}

LPCSTR switch_text(int on) {
    return on ? "ON" : "OFF";
}

int read_switch(const CRegistryKey& key, LPCSTR name, int on) {
    return key.GetValue(name, switch_text(on)) == "ON";
}

/// The application's key of that name; null without an application, or without its registry key.
HKEY section_key(LPCSTR section) {
    CWinApp* const application = AfxGetApp();
    return application ? application->GetSectionKey(section) : nullptr;
}

} // namespace

CComDeviceConfiguration::CComDeviceConfiguration() : m_strPortName("COM1:") {}

CComDeviceConfiguration::CComDeviceConfiguration(const CComDeviceConfiguration& other) : CObject() {
    *this = other;
    m_pMap = other.m_pMap ? VariousMap::Acquire() : nullptr;
}

CComDeviceConfiguration& CComDeviceConfiguration::operator=(const CComDeviceConfiguration& other) {
    if (this == &other) {
        return *this;
    }
    m_wStopBits = other.m_wStopBits;
    m_wByteSize = other.m_wByteSize;
    m_wParity = other.m_wParity;
    m_dwBaudRate = other.m_dwBaudRate;
    m_byFlags = other.m_byFlags;
    m_strPortName = other.m_strPortName;
    m_bConnectOnLoad = other.m_bConnectOnLoad;
    return *this; // lists that it has already are the same
}

CComDeviceConfiguration::~CComDeviceConfiguration() {
    if (m_pMap) {
        m_pMap->Release();
    }
}

VariousMap* CComDeviceConfiguration::GetMap() {
    if (!m_pMap) {
        m_pMap = VariousMap::Acquire();
    }
    return m_pMap;
}

void CComDeviceConfiguration::SetPortName(int number) {
    m_strPortName.Format("COM%d:", number);
}

void CComDeviceConfiguration::SetPortName(LPCSTR name) {
    m_strPortName = name;
}

int CComDeviceConfiguration::SetBaudRate(int rate) {
    const CComBaudRates& rates = GetMap()->m_baudRates;
    m_dwBaudRate = static_cast<DWORD>(rates.FindValue(rates.FindText(rate)));
    return m_dwBaudRate != unlisted_rate;
}

CString CComDeviceConfiguration::GetInfoString() const {
    const char handshakes[] = {GetRtsCts() ? 'X' : ' ', GetDtrDsr() ? 'X' : ' ',
                               GetXonXoff() ? 'X' : ' ', '\0'};
    CString info;
    info.Format("%s %d,%d,%d,%d (%s)", m_strPortName.GetString(), static_cast<int>(m_dwBaudRate),
                m_wByteSize, m_wParity, m_wStopBits, handshakes);
    return info;
}

void CComDeviceConfiguration::ReadFromRegistry(HKEY key) {
    const VariousMap& map = *GetMap();
    const CRegistryKey values(key, 0);
    m_strPortName = values.GetValue("Port", m_strPortName);
    const int rate = static_cast<int>(m_dwBaudRate);
    m_dwBaudRate = static_cast<DWORD>(read_setting(values, "Baud", map.m_baudRates, rate));
    m_wParity = static_cast<WORD>(read_setting(values, "Parity", map.m_parities, m_wParity));
    m_wStopBits = static_cast<WORD>(read_setting(values, "Stop Bits", map.m_stopBits, m_wStopBits));
    m_wByteSize = static_cast<WORD>(values.GetValue("Byte Size", m_wByteSize));
    SetDtrDsr(read_switch(values, "DTRDSR", GetDtrDsr()));
    SetRtsCts(read_switch(values, "RTSCTS", GetRtsCts()));
    SetXonXoff(read_switch(values, "XONXOFF", GetXonXoff()));
    m_bConnectOnLoad = read_switch(values, "AutoConnect", m_bConnectOnLoad);
}

void CComDeviceConfiguration::WriteToRegistry(HKEY key) {
    const VariousMap& map = *GetMap();
    CRegistryKey values(key, 0);
    values.WriteValue("Port", m_strPortName);
    values.WriteValue("Baud", map.m_baudRates.FindText(static_cast<int>(m_dwBaudRate)));
    values.WriteValue("Parity", map.m_parities.FindText(m_wParity));
    values.WriteValue("Stop Bits", map.m_stopBits.FindText(m_wStopBits));
    values.WriteValue("Byte Size", m_wByteSize);
    values.WriteValue("DTRDSR", switch_text(GetDtrDsr()));
    values.WriteValue("RTSCTS", switch_text(GetRtsCts()));
    values.WriteValue("XONXOFF", switch_text(GetXonXoff()));
    values.WriteValue("AutoConnect", switch_text(m_bConnectOnLoad));
}

void CComDeviceConfiguration::ReadFromRegistry(LPCSTR section) {
    if (const HKEY key = section_key(section)) {
        const CRegistryKey owner(key, 1);
        ReadFromRegistry(key);
    }
}

void CComDeviceConfiguration::WriteToRegistry(LPCSTR section) {
    if (const HKEY key = section_key(section)) {
        const CRegistryKey owner(key, 1);
        WriteToRegistry(key);
    }
}
