#include "net/TextData.h"

#include "platform/files/archive.h"

#include <string_view>

IMPLEMENT_DYNAMIC(CSocketDataString, CSocketData)

namespace {

std::string_view view(const CString& text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

// These are called for each byte, and so stand where the compiler takes them in.

/// Whether that ends a line that is not empty.
inline bool ends_line(std::string& text, char byte) {
    const bool is_end = byte == '\0' || byte == '\n' || byte == '\r';
    if (!is_end) {
        text.push_back(byte);
    }
    return is_end && !text.empty();
}

/// Whether that completes the terminator, which is then taken off.
inline bool ends_with(std::string& text, std::string_view terminator) {
    const bool complete = text.ends_with(terminator);
    if (complete) {
        text.resize(text.size() - terminator.size());
    }
    return complete;
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
    if (m_bComplete) {
        m_bComplete = 0;
        m_Text.clear();
    }
    BYTE byte = 0;
    ar >> byte;
    const char character = static_cast<char>(byte);
    const std::string_view terminator = view(m_pFormat->GetReceivedStringTerminator());
    if (terminator.empty()) {
        m_bComplete = ends_line(m_Text, character);
        return m_bComplete;
    }
    m_Text.push_back(character);
    m_bComplete = m_pFormat->GetOptionalReceiveTerminators()
                      ? terminator.find(character) != terminator.npos
                      : ends_with(m_Text, terminator);
    return m_bComplete;
}

void CSocketDataString::Send(CArchive& ar) const {
    const CString& terminator = m_pFormat->GetTerminator();
    // With the zero that ends its characters anyway, if there is to be one.
    const int zero = m_pFormat->GetSendNullTerminatedString() ? 1 : 0;
    ar.Write(m_Text.data(), static_cast<UINT>(m_Text.size()));
    ar.Write(terminator.GetString(), static_cast<UINT>(terminator.GetLength() + zero));
}
