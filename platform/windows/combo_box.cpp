#include "platform/windows/combo_box.h"

#include "platform/windows/control_messages.h"

#include <string>

IMPLEMENT_DYNAMIC(CComboBox, CWnd)

int CComboBox::AddString(LPCSTR text) {
    return static_cast<int>(SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)));
}

int CComboBox::GetCount() const {
    return static_cast<int>(SendMessage(CB_GETCOUNT));
}

int CComboBox::GetCurSel() const {
    return static_cast<int>(SendMessage(CB_GETCURSEL));
}

int CComboBox::SetCurSel(int position) {
    return static_cast<int>(SendMessage(CB_SETCURSEL, static_cast<WPARAM>(position)));
}

void CComboBox::GetLBText(int position, CString& text) const {
    const auto place = static_cast<WPARAM>(position);
    const auto length = static_cast<int>(SendMessage(CB_GETLBTEXTLEN, place));
    std::string buffer(static_cast<std::size_t>(length < 0 ? 0 : length) + 1, '\0');
    SendMessage(CB_GETLBTEXT, place, reinterpret_cast<LPARAM>(buffer.data()));
    text = buffer.c_str();
}
