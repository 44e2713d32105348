#include "desktop/EncoderControls.h"
#include "desktop/EncoderDialog.h"
#include "platform/windows/control_messages.h"

#include <string_view>

using namespace tarnel::encoder_controls;

// What the encoder dialog shows, and where: the rows, their names, the height, and the controls
// that keep to the edges of the dialog.

namespace {

constexpr LONG space_below_rows = 80; ///< pixels from the last bar to the dialog's lower edge

/// How a control follows when the dialog's client area changes its size.
enum Anchor : DWORD {
    keep_left = 0x1, ///< with follow_width: becomes wider in place of moving
    keep_top = 0x2,  ///< with follow_height: becomes taller
    follow_width = 0x4,
    follow_height = 0x8,
};

struct AnchoredControl {
    int id;
    DWORD anchors;
};

constexpr AnchoredControl anchored_controls[] = {
    {IDCANCEL, follow_width | follow_height},
    {frame_box, keep_left | keep_top | follow_width | follow_height},
    {do_all_button, keep_left | follow_height},
    {set_home_button, keep_left | follow_width | follow_height},
    {prompt_text, keep_left | keep_top | follow_width},
    {1001, keep_left | keep_top | follow_width},
    {1002, keep_left | keep_top | follow_width},
    {1003, keep_left | keep_top | follow_width},
    {1004, keep_left | keep_top | follow_width},
    {1005, keep_left | keep_top | follow_width},
    {1006, keep_left | keep_top | follow_width},
    {1007, keep_left | keep_top | follow_width},
    {1008, keep_left | keep_top | follow_width},
};

RECT follow(RECT edges, DWORD anchors, LONG across, LONG down) {
    if ((anchors & follow_width) != 0) {
        edges.right += across;
        edges.left += (anchors & keep_left) != 0 ? 0 : across;
    }
    if ((anchors & follow_height) != 0) {
        edges.bottom += down;
        edges.top += (anchors & keep_top) != 0 ? 0 : down;
    }
    return edges;
}

void move_anchored(CWnd& dialog, LONG across, LONG down) {
    for (const auto& [id, anchors] : anchored_controls) {
        if (CWnd* const control = dialog.GetDlgItem(id)) {
            RECT edges{};
            control->GetWindowRect(&edges);
            edges = follow(edges, anchors, across, down);
            dialog.ScreenToClient(&edges);
            control->MoveWindow(edges);
        }
    }
}

void show(CWnd* control, int visible) {
    if (control) {
        control->ShowWindow(visible ? SW_SHOW : SW_HIDE);
    }
}

void set_text(CWnd* window, const CString& text) {
    if (window && !text.IsEmpty()) {
        window->SetWindowText(text);
    }
}

} // namespace

constinit const UINT CEncoderInitDlg::s_anProgressIds[] = {1001, 1002, 1003, 1004,
                                                           1005, 1006, 1007, 1008};
constinit const UINT CEncoderInitDlg::s_anStaticIds[] = {1011, 1012, 1013, 1014,
                                                         1015, 1016, 1017, 1018};
constinit const UINT CEncoderInitDlg::s_anButtonIds[] = {1021, 1022, 1023, 1024,
                                                         1025, 1026, 1027, 1028};

CWnd* CEncoderInitDlg::row(const UINT (&ids)[max_encoders], int encoder) const {
    return GetDlgItem(static_cast<int>(ids[encoder]));
}

BOOL CEncoderInitDlg::OnInitDialog() {
    mdfDialog::OnInitDialog();
    for (int encoder = 0; encoder < max_encoders; ++encoder) {
        if (const CWnd* const bar = row(s_anProgressIds, encoder)) {
            bar->SendMessage(PBM_SETRANGE, 0, MAKELPARAM(0, 100));
        }
    }
    set_text(this, m_strTitle);
    set_text(GetDlgItem(prompt_text), m_strPrompt);
    set_text(GetDlgItem(encoder_prompt_text), m_strEncoderPrompt);
    InitEncoderNames();
    Reset();
    return TRUE;
}

void CEncoderInitDlg::InitEncoderNames() {
    std::string_view rest(m_strEncoderNames.GetString());
    for (int encoder = 0; encoder < max_encoders && !rest.empty(); ++encoder) {
        const std::size_t length = rest.find(';');
        const CString name(rest.data(), static_cast<int>(std::min(length, rest.size())));
        for (CWnd* const control : {row(s_anStaticIds, encoder), row(s_anButtonIds, encoder)}) {
            if (control) {
                control->SetWindowText(name);
            }
        }
        rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
    }
}

void CEncoderInitDlg::Reset() {
    m_anInitDone.fill(0);
    UpdateUI();
}

void CEncoderInitDlg::UpdateUI() {
    for (int encoder = 0; encoder < max_encoders; ++encoder) {
        ShowEncoderControls(encoder, encoder < m_nEncoderCount);
    }
    show(GetDlgItem(do_all_button), m_bUserControlled);
    show(GetDlgItem(set_home_button), m_bShowSetHome);
    FitHeight();
}

void CEncoderInitDlg::ShowEncoderControls(int encoder, int visible) {
    show(row(s_anProgressIds, encoder), visible);
    show(row(s_anStaticIds, encoder), visible);
    show(row(s_anButtonIds, encoder), visible && m_bUserControlled);
}

/// The controls below the rows follow by the WM_SIZE that this brings.
void CEncoderInitDlg::FitHeight() {
    const CWnd* const last = row(s_anProgressIds, m_nEncoderCount - 1);
    if (!last) {
        return;
    }
    RECT bar{};
    last->GetWindowRect(&bar);
    RECT dialog{};
    GetWindowRect(&dialog);
    dialog.bottom = bar.bottom + space_below_rows;
    MoveWindow(dialog);
}

void CEncoderInitDlg::OnSize(UINT type, int width, int height) {
    if (GetDlgItem(anchored_controls[0].id)) { // not at the first size, before the controls
        move_anchored(*this, width - m_nLastWidth, height - m_nLastHeight);
    }
    m_nLastWidth = width;
    m_nLastHeight = height;
    Invalidate();
    mdfDialog::OnSize(type, width, height);
}
