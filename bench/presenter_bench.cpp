// How long a person waits for a dialog: from DoModal to the first painting on the display, which
// the environment names; the program that shows it is started by the first one.

#include "bench/report.h"
#include "platform/messages/message.h"
#include "serial/SettingsDialog.h"

#include <chrono>
#include <cstdio>

namespace {

using Clock = std::chrono::steady_clock;

/// Notes when it has been painted, and closes.
class Dialog : public CComSettingDlg {
  public:
    using CComSettingDlg::CComSettingDlg;

    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_PAINT) {
            painted = Clock::now();
            PostMessage(WM_CLOSE);
        }
        return CComSettingDlg::WindowProc(message, wparam, lparam);
    }

    Clock::time_point painted;
};

/// Milliseconds for one dialog; negative when it cannot be shown.
double open_dialog(CComDeviceConfiguration& configuration) {
    Dialog dialog(configuration, 0, CComSettingDlg::usual_template, nullptr);
    const auto start = Clock::now();
    const bool shown = dialog.DoModal() == IDCANCEL;
    return shown ? std::chrono::duration<double, std::milli>(dialog.painted - start).count() : -1;
}

} // namespace

int main() {
    CComDeviceConfiguration configuration;
    const double first = open_dialog(configuration);
    if (first < 0) {
        std::fputs("presenter_bench: no display, nothing measured\n", stderr);
        return 0;
    }
    bench::report("g.dialog.first", "tarnel", first, "ms");
    std::vector<double> later;
    for (int i = 0; i < 51; ++i) {
        later.push_back(open_dialog(configuration));
    }
    bench::report("g.dialog.later", "tarnel", bench::median(later), "ms");
}
