#pragma once

#include "net/SocketData.h"
#include "platform/base/string.h"

#include <string>

/// How texts end on the wire. One object may rule many payloads: it outlives them, and a change
/// counts for all of them at once.
class TARNEL_API CSocketDataStringFormat {
  public:
    /// Texts are sent with a closing 0x00, and received by lines.
    CSocketDataStringFormat();
    ~CSocketDataStringFormat();

    /// The bytes that follow each text that is sent; null or empty for none.
    void SetTerminator(LPCSTR p) { m_Terminator = p; }

    const CString& GetTerminator() const { return m_Terminator; }

    /// The bytes that end a received text; null or empty for lines, which end with 0x00, LF or CR
    /// and are never empty.
    void SetReceivedStringTerminator(LPCSTR p) { m_ReceivedStringTerminator = p; }

    const CString& GetReceivedStringTerminator() const { return m_ReceivedStringTerminator; }

    /// Nonzero: a byte 0x00 follows the terminator that is sent.
    void SetSendNullTerminatedString(int b) { m_bSendNullTerminatedString = b; }

    int GetSendNullTerminatedString() const { return m_bSendNullTerminatedString; }

    /// Nonzero: each single character of the received-string terminator ends a text, and stays in
    /// it. 0: the terminator ends a text as a whole, and is taken off.
    void SetOptionalReceiveTerminators(int b) { m_bOptionalReceiveTerminators = b; }

    int GetOptionalReceiveTerminators() const { return m_bOptionalReceiveTerminators; }

  private:
    CString m_Terminator;
    int m_bSendNullTerminatedString = 1;
    CString m_ReceivedStringTerminator;
    int m_bOptionalReceiveTerminators = 0;
};

/// A text payload: bytes of the process's code page, of any length, as its format says.
class TARNEL_API CSocketDataString : public CSocketData {
    DECLARE_DYNAMIC(CSocketDataString)

    explicit CSocketDataString(CSocketDataStringFormat& format);
    ~CSocketDataString() override;

    /// The text to send; the next received byte begins a new one.
    void SetString(LPCSTR p);

    /// A copy of the text, complete or not.
    CString GetString() const;

    /// Storing: writes the text with its end, 1. Loading: takes one byte, for which it waits;
    /// nonzero when that completes the text, which then stays until the next byte is taken.
    int Serialise(CArchive& ar) override;

  private:
    void Send(CArchive& ar) const;

    std::string m_Text;
    int m_bComplete = 0;
    CSocketDataStringFormat* const m_pFormat;
};
