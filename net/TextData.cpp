#include "net/TextData.h"

#include "platform/files/archive.h"

IMPLEMENT_DYNAMIC(CSocketDataString, CSocketData)

namespace {

std::string_view view(const CString& text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

} // namespace

CSocketDataStringFormat::CSocketDataStringFormat() = default;

CSocketDataStringFormat::~CSocketDataStringFormat() = default;

CSocketDataString::CSocketDataString(CSocketDataStringFormat& format) : m_pFormat(&format) {}

CSocketDataString::~CSocketDataString() = default;

void CSocketDataString::SetString(LPCSTR p) {
    m_Text = p ? p : "";
    m_bComplete = 1;
}

CString CSocketDataString::GetString() const {
    return {m_Text.data(), static_cast<int>(m_Text.size())};
}

int CSocketDataString::Serialise(CArchive& ar) {
    if (ar.IsStoring()) {
        Send(ar);
        return 1;
    }
    ProcessReceivedString(ar);
    return m_bComplete;
}

void CSocketDataString::Send(CArchive& ar) const {
    const CString& terminator = m_pFormat->GetTerminator();
    // With the zero that ends its characters anyway, if there is to be one.
    const int zero = m_pFormat->GetSendNullTerminatedString() ? 1 : 0;
    ar.Write(m_Text.data(), static_cast<UINT>(m_Text.size()));
    ar.Write(terminator.GetString(), static_cast<UINT>(terminator.GetLength() + zero));
}

void CSocketDataString::ProcessReceivedString(CArchive& ar) {
    if (m_bComplete) {
        m_bComplete = 0;
        m_Text.clear();
    }
    BYTE byte = 0;
    ar >> byte;
    const char character = static_cast<char>(byte);
    const std::string_view terminator = view(m_pFormat->GetReceivedStringTerminator());
    if (terminator.empty()) {
        m_bComplete = EndsLine(character);
        return;
    }
    m_Text += character;
    m_bComplete = m_pFormat->GetOptionalReceiveTerminators()
                      ? terminator.find(character) != terminator.npos
                      : EndsWithTerminator(terminator);
}

bool CSocketDataString::EndsLine(char byte) {
    if (byte == '\0' || byte == '\n' || byte == '\r') {
        return !m_Text.empty();
    }
    m_Text += byte;
    return false;
}

bool CSocketDataString::EndsWithTerminator(std::string_view terminator) {
    const bool complete = m_Text.ends_with(terminator);
    if (complete) {
        m_Text.resize(m_Text.size() - terminator.size());
    }
    return complete;
}
