#include "desktop/EncoderDialog.h"

#include "desktop/EncoderControls.h"
#include "platform/companions/wait_with_loop.h"
#include "platform/windows/control_messages.h"

#include <algorithm>

using namespace tarnel::encoder_controls;

namespace {

constexpr UINT dialog_template = 12500;

// A bar is this full, in percent, while its encoder is initialised and afterwards.
constexpr int position_running = 25;
constexpr int position_done = 100;

constexpr DWORD referencing_slice = 100; ///< ms

/// Tells whether a dialog's window has gone since this was made, and perhaps the object with it.
class Presence {
  public:
    explicit Presence(HWND window) : window_(window) {}

    bool is_gone() const { return window_ && !IsWindow(window_); }

  private:
    HWND window_;
};

void enable(CWnd* control, int enabled) {
    if (control) {
        control->EnableWindow(enabled);
    }
}

} // namespace

BEGIN_MESSAGE_MAP(CEncoderInitDlg, mdfDialog)
ON_WM_SIZE()
ON_BN_CLICKED(1021, OnButton1Click)
ON_BN_CLICKED(1022, OnButton2Click)
ON_BN_CLICKED(1023, OnButton3Click)
ON_BN_CLICKED(1024, OnButton4Click)
ON_BN_CLICKED(1025, OnButton5Click)
ON_BN_CLICKED(1026, OnButton6Click)
ON_BN_CLICKED(1027, OnButton7Click)
ON_BN_CLICKED(1028, OnButton8Click)
ON_BN_CLICKED(do_all_button, OnButtonDoAllClick)
ON_BN_CLICKED(set_home_button, OnButtonSetHomeClick)
END_MESSAGE_MAP()

CEncoderInitDlg::CEncoderInitDlg(CWnd* parent) : mdfDialog(dialog_template, parent) {}

CEncoderInitDlg::~CEncoderInitDlg() = default;

int CEncoderInitDlg::Create(CWnd* parent) {
    return mdfDialog::Create(dialog_template, parent);
}

int CEncoderInitDlg::SetEncoderCount(int count) {
    if (count < 1 || count > max_encoders) {
        return 0;
    }
    m_nEncoderCount = count;
    return 1;
}

void CEncoderInitDlg::SetInitDone(int encoder, int done) {
    int& mark = m_anInitDone[static_cast<std::size_t>(encoder)];
    if (mark == done) {
        return;
    }
    mark = done;
    if (done) {
        RunInit(encoder);
    }
}

/// False when the dialog has gone meanwhile, or the application ends: nothing more is to be done.
bool CEncoderInitDlg::RunInit(int encoder) {
    const Presence presence(m_hWnd);
    enable_buttons(0);
    SetProgress(encoder, position_running);
    OnInitDone(encoder);
    while (!presence.is_gone() && m_bReferencing) {
        if (SafeWaitWithMessageLoop(0, nullptr, referencing_slice, 1, nullptr) == WAIT_QUIT) {
            return false;
        }
    }
    if (presence.is_gone()) {
        return false;
    }
    SetProgress(encoder, position_done);
    enable_buttons(1);
    if (GetAllDone()) {
        OnAllDone();
    }
    return !presence.is_gone();
}

int CEncoderInitDlg::GetAllDone() const {
    return std::all_of(m_anInitDone.begin(), m_anInitDone.begin() + m_nEncoderCount,
                       [](int done) { return done != 0; });
}

void CEncoderInitDlg::set_home_init(int init) {
    std::fill_n(m_anInitDone.begin(), m_nEncoderCount, init);
    if (!init) {
        return;
    }
    const Presence presence(m_hWnd);
    enable_buttons(0);
    for (int encoder = 0; encoder < m_nEncoderCount; ++encoder) {
        SetProgress(encoder, position_running);
    }
    OnInitDone(-1);
    if (presence.is_gone()) {
        return;
    }
    for (int encoder = 0; encoder < m_nEncoderCount; ++encoder) {
        SetProgress(encoder, position_done);
    }
    enable_buttons(1);
    OnAllDone();
}

void CEncoderInitDlg::SetProgress(int encoder, int position) {
    if (const CWnd* const bar = row(s_anProgressIds, encoder)) {
        bar->SendMessage(PBM_SETPOS, static_cast<WPARAM>(position));
    }
}

void CEncoderInitDlg::enable_buttons(int enabled) {
    for (int encoder = 0; encoder < m_nEncoderCount; ++encoder) {
        enable(row(s_anButtonIds, encoder), enabled);
    }
    enable(GetDlgItem(do_all_button), enabled);
    enable(GetDlgItem(set_home_button), enabled);
}

void CEncoderInitDlg::DoDataExchange(CDataExchange*) {}

void CEncoderInitDlg::OnCancel() {
    m_bCancelled = 1;
    mdfDialog::OnCancel();
    OnCancelled();
}

void CEncoderInitDlg::OnInitDone(LONG) {}

void CEncoderInitDlg::OnAllDone() {}

void CEncoderInitDlg::OnCancelled() {}

void CEncoderInitDlg::OnButton1Click() {
    SetInitDone(0, 1);
}

void CEncoderInitDlg::OnButton2Click() {
    SetInitDone(1, 1);
}

void CEncoderInitDlg::OnButton3Click() {
    SetInitDone(2, 1);
}

void CEncoderInitDlg::OnButton4Click() {
    SetInitDone(3, 1);
}

void CEncoderInitDlg::OnButton5Click() {
    SetInitDone(4, 1);
}

void CEncoderInitDlg::OnButton6Click() {
    SetInitDone(5, 1);
}

void CEncoderInitDlg::OnButton7Click() {
    SetInitDone(6, 1);
}

void CEncoderInitDlg::OnButton8Click() {
    SetInitDone(7, 1);
}

void CEncoderInitDlg::OnButtonDoAllClick() {
    for (int encoder = 0; encoder < m_nEncoderCount; ++encoder) {
        int& mark = m_anInitDone[static_cast<std::size_t>(encoder)];
        if (mark == 1) {
            continue;
        }
        mark = 1;
        if (!RunInit(encoder)) {
            return; // the object may be gone
        }
    }
}

void CEncoderInitDlg::OnButtonSetHomeClick() {
    set_home_init(1);
}
