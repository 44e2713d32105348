#include "serial/ComDevice.h"

#include "platform/base/last_error.h"
#include "platform/threads/event.h"

#include <cstring>

IMPLEMENT_DYNAMIC(CComDevice, CObject)

namespace {

constexpr DWORD default_timeout = 1000; // milliseconds, reading and writing
constexpr DWORD driver_queue = 512;

} // namespace

CComDevice::CComDevice() : m_pReceiveBuffer(new char[receive_buffer_size]()) {
    for (OVERLAPPED* overlap : {&m_ReadOverlap, &m_WriteOverlap, &m_WaitOverlap}) {
        overlap->hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    }
}

CComDevice::~CComDevice() {
    CloseConnection();
    for (const OVERLAPPED* overlap : {&m_ReadOverlap, &m_WriteOverlap, &m_WaitOverlap}) {
        CloseHandle(overlap->hEvent);
    }
}

int CComDevice::OpenConnection(int start_reader) {
    if (m_bConnected || m_hPort != INVALID_HANDLE_VALUE) {
        return 1;
    }
    m_hPort = CreateFileA(m_Configuration.m_strPortName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                          OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (m_hPort == INVALID_HANDLE_VALUE) {
        return 0;
    }
    SetupComm(m_hPort, driver_queue, driver_queue);
    const COMMTIMEOUTS timeouts{0, 0, default_timeout, 0, default_timeout};
    SetCommTimeouts(m_hPort, &timeouts);
    if (!SetupConnection()) {
        return AbandonOpening();
    }
    m_bConnected = 1;
    if (start_reader && !StartThread()) {
        return AbandonOpening();
    }
    EscapeCommFunction(m_hPort, SETDTR);
    EscapeCommFunction(m_hPort, SETRTS);
    return 1;
}

int CComDevice::AbandonOpening() {
    m_bConnected = 0;
    CloseHandle(m_hPort);
    m_hPort = INVALID_HANDLE_VALUE;
    return 0;
}

int CComDevice::SetupConnection() {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    GetCommState(m_hPort, &settings);
    const bool dtr_dsr = m_Configuration.GetDtrDsr() != 0;
    const bool rts_cts = m_Configuration.GetRtsCts() != 0;
    const bool xon_xoff = m_Configuration.GetXonXoff() != 0;
    settings.BaudRate = m_Configuration.m_dwBaudRate;
    settings.ByteSize = static_cast<BYTE>(m_Configuration.m_wByteSize);
    settings.Parity = static_cast<BYTE>(m_Configuration.m_wParity);
    settings.StopBits = static_cast<BYTE>(m_Configuration.m_wStopBits);
    settings.fBinary = 1;
    settings.fParity = 1;
    settings.fOutxCtsFlow = rts_cts;
    settings.fOutxDsrFlow = dtr_dsr;
    settings.fDtrControl = dtr_dsr ? DTR_CONTROL_HANDSHAKE : DTR_CONTROL_ENABLE;
    settings.fDsrSensitivity = 0;
    settings.fOutX = settings.fInX = xon_xoff;
    settings.fRtsControl = rts_cts ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
    settings.fAbortOnError = 1;
    settings.XonLim = 50;
    settings.XoffLim = 200;
    settings.XonChar = 0x11;
    settings.XoffChar = 0x13;
    return SetCommState(m_hPort, &settings);
}

int CComDevice::EditParameters() {
    m_Configuration.Edit(m_bConnected);
    SetupConnection();
    return 1;
}

int CComDevice::CloseConnection() {
    if (!m_bConnected) {
        return 0;
    }
    ::PurgeComm(m_hPort, PURGE_TXCLEAR | PURGE_RXCLEAR);
    SetCommMask(m_hPort, 0);
    StopThread();
    EscapeCommFunction(m_hPort, CLRDTR);
    ::PurgeComm(m_hPort, PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR);
    if (CloseHandle(m_hPort)) {
        m_bConnected = 0;
        m_hPort = INVALID_HANDLE_VALUE;
    }
    return 1;
}

int CComDevice::PurgeComm(unsigned int flags) {
    return m_bConnected && m_hPort != INVALID_HANDLE_VALUE ? ::PurgeComm(m_hPort, flags) : 0;
}

int CComDevice::WriteCommBlock(const char* data, DWORD length) {
    DWORD written = 0;
    if (!m_bConnected) {
        return 0;
    }
    const bool done = WriteFile(m_hPort, data, length, &written, &m_WriteOverlap) ||
                      (GetLastError() == ERROR_IO_PENDING &&
                       GetOverlappedResult(m_hPort, &m_WriteOverlap, &written, TRUE));
    return done && written == length; // the time-out may have cut it short
}

int CComDevice::WriteCommBlock(const char* text) {
    return WriteCommBlock(text, static_cast<DWORD>(std::strlen(text)));
}
