#include "protocols/ProbeDialog.h"

#include "platform/windows/control_messages.h"
#include "platform/windows/data_exchange.h"

namespace {

constexpr UINT dialog_template = 12503;
constexpr int probe_edit = 211;
constexpr int probe_arrows = 221;
constexpr int smallest_probe = 1;
constexpr int largest_probe = 32767;

} // namespace

BEGIN_MESSAGE_MAP(tbxProbeSelectionDlg, mdfDialog)
END_MESSAGE_MAP()

tbxProbeSelectionDlg::tbxProbeSelectionDlg(CWnd* parent) : mdfDialog(dialog_template, parent) {}

tbxProbeSelectionDlg::~tbxProbeSelectionDlg() = default;

void tbxProbeSelectionDlg::DoDataExchange(CDataExchange* exchange) {
    DDX_Text(exchange, probe_edit, m_nProbe);
}

BOOL tbxProbeSelectionDlg::OnInitDialog() {
    if (const CWnd* const arrows = GetDlgItem(probe_arrows)) {
        arrows->SendMessage(UDM_SETRANGE, 0, MAKELPARAM(largest_probe, smallest_probe));
    }
    return mdfDialog::OnInitDialog();
}
