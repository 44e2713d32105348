#pragma once

#include "platform/registry/registry.h"
#include "serial/SettingLists.h"

/// The settings of one serial port. The device, the settings dialog and the protocols work on the
/// fields directly. Used from one thread at a time, the application's.
///
/// In the registry a configuration is nine values in one key: "Port", "Baud", "Parity" and "Stop
/// Bits" as the texts of the lists, "Byte Size" as a number, "DTRDSR", "RTSCTS", "XONXOFF" and
/// "AutoConnect" as "ON" or "OFF".
class TARNEL_API CComDeviceConfiguration : public CObject {
  public:
    static constexpr DWORD unlisted_rate = 0xFFFFFFFF;

    /// COM1:, 9600 baud, 7 data bits, even parity, one stop bit, no handshake.
    CComDeviceConfiguration();

    /// A copy is a user of the shared lists in its own right.
    CComDeviceConfiguration(const CComDeviceConfiguration& other);
    CComDeviceConfiguration& operator=(const CComDeviceConfiguration& other);

    ~CComDeviceConfiguration() override;

    CString GetPortName() const { return m_strPortName; }

    /// "COM3:" for 3.
    void SetPortName(int number);

    /// A name such as "COM3:", or the path of a device; kept as it is.
    void SetPortName(LPCSTR name);

    /// 1 when `rate`, in bits per second, is listed; otherwise 0, and the old rate is lost.
    int SetBaudRate(int rate);

    int GetDtrDsr() const { return has(dtr_dsr); }

    int GetRtsCts() const { return has(rts_cts); }

    int GetXonXoff() const { return has(xon_xoff); }

    void SetDtrDsr(int on) { set(dtr_dsr, on); }

    void SetRtsCts(int on) { set(rts_cts, on); }

    void SetXonXoff(int on) { set(xon_xoff, on); }

    int GetConnectOnLoad() const { return m_bConnectOnLoad; }

    /// Opens the settings dialog on this configuration; with `port_locked` nonzero the port cannot
    /// be changed.
    void Edit(int port_locked);

    /// The settings in one line: port, rate, data bits, the codes of parity and stop bits, and an X
    /// for each of RTS/CTS, DTR/DSR and XON/XOFF, as in "COM1: 9600,7,2,0 ( X )".
    CString GetInfoString() const;

    /// Takes the values from `key`, which stays open. What is missing there stays as it is; a text
    /// that no list has gives the code for an unlisted value, and a handshake is on for "ON" alone.
    void ReadFromRegistry(HKEY key);

    /// Stores all values in `key`, which stays open; "NOT FOUND" for what is not listed. The store
    /// reports no failure here.
    void WriteToRegistry(HKEY key);

    /// The same with the key `section` of the application. Without an application, or where its
    /// registry key is not configured, nothing is read or stored.
    void ReadFromRegistry(LPCSTR section);
    void WriteToRegistry(LPCSTR section);

    WORD m_wStopBits = 0;          ///< 0 one, 1 one and a half, 2 two; 0xFFFF unlisted
    WORD m_wByteSize = 7;          ///< data bits, 5 to 8
    WORD m_wParity = 2;            ///< 0 none, 1 odd, 2 even, 3 mark, 4 space; 0xFFFF unlisted
    DWORD m_dwBaudRate = 9600;     ///< bits per second, or `unlisted_rate`
    BYTE m_byFlags = 0;            ///< the handshakes, a bit each
    CString m_strPortName;         ///< what the device opens
    BOOL m_bConnectOnLoad = FALSE; ///< whether the owner opens the port once it has read this

  protected:
    /// The shared lists; taken at the first call and kept until this object goes.
    VariousMap* GetMap();

  private:
    enum Handshake : BYTE { dtr_dsr = 1, rts_cts = 2, xon_xoff = 4 };

    int has(Handshake handshake) const { return (m_byFlags & handshake) != 0; }

    void set(Handshake handshake, int on) {
        m_byFlags = static_cast<BYTE>(on ? m_byFlags | handshake : m_byFlags & ~handshake);
    }

    VariousMap* m_pMap = nullptr;
};
