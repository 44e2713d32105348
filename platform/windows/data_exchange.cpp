#include "platform/windows/data_exchange.h"

#include "platform/base/diagnostics.h"
#include "platform/base/exceptions.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/message_box.h"
#include "platform/windows/message_box_window.h"

#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr UINT prompt_for_integer = 0xF110;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Nothing for what is no whole number.
std::optional<LONG> parse(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    LONG value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    using Limits = std::numeric_limits<LONG>;
    if (error == std::errc::result_out_of_range) {
        value = text.starts_with('-') ? Limits::min() : Limits::max();
    }
    return value;
}

std::string prompt() {
    CString text;
    return text.LoadString(prompt_for_integer) ? text.GetString() : "Please enter an integer.";
}

CString text_of(HWND control) {
    CString text;
    CWnd::FromHandle(control)->GetWindowText(text);
    return text;
}

} // namespace

HWND CDataExchange::PrepareCtrl(int id) {
    const CWnd* const control = m_pDlgWnd->GetDlgItem(id);
    if (!control) {
        CString caption;
        m_pDlgWnd->GetWindowText(caption);
        tarnel::report("the dialog \"" + std::string(caption) + "\" has no control " +
                       std::to_string(id));
        AfxThrowNotSupportedException();
    }
    return last_control_ = control->m_hWnd;
}

void CDataExchange::Fail() {
    // The person may have been asked meanwhile, and the control may be gone.
    if (CWnd* const control = CWnd::FromHandle(last_control_)) {
        control->SetFocus();
        SendMessageA(last_control_, EM_SETSEL, 0, -1);
    }
    AfxThrowUserException();
}

void DDX_Control(CDataExchange* exchange, int id, CWnd& member) {
    if (member.m_hWnd) {
        return;
    }
    exchange->PrepareCtrl(id);
    if (!member.SubclassDlgItem(static_cast<UINT>(id), exchange->m_pDlgWnd)) {
        AfxThrowNotSupportedException();
    }
}

void DDX_Check(CDataExchange* exchange, int id, int& value) {
    const HWND box = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) {
        value = static_cast<int>(SendMessageA(box, BM_GETCHECK, 0, 0));
        return;
    }
    const bool known = value >= BST_UNCHECKED && value <= BST_INDETERMINATE;
    SendMessageA(box, BM_SETCHECK, static_cast<WPARAM>(known ? value : BST_UNCHECKED), 0);
}

void DDX_CBString(CDataExchange* exchange, int id, CString& text) {
    const HWND list = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) {
        text = text_of(list);
        return;
    }
    constexpr auto from_the_first = static_cast<WPARAM>(-1);
    SendMessageA(list, CB_SELECTSTRING, from_the_first, reinterpret_cast<LPARAM>(text.GetString()));
}

void DDX_Text(CDataExchange* exchange, int id, LONG& value) {
    const HWND edit = exchange->PrepareCtrl(id);
    if (!exchange->m_bSaveAndValidate) {
        std::array<char, 12> text{}; // the longest, and its end
        std::to_chars(text.data(), text.data() + text.size() - 1, value);
        CWnd::FromHandle(edit)->SetWindowText(text.data());
        return;
    }
    const std::optional<LONG> entered = parse(text_of(edit).GetString());
    if (!entered) {
        tarnel::show_message_of_application(exchange->m_pDlgWnd->m_hWnd, prompt(), MB_OK);
        exchange->Fail();
    }
    value = *entered;
}
