// How long a person's first dialog keeps them waiting: from DoModal to the first message that the
// shown dialog handles, without the presenter's own time.

#include "bench/report.h"
#include "platform/messages/message.h"
#include "platform/windows/presenter.h"
#include "serial/SettingsDialog.h"

#include <chrono>
#include <cstdlib>

namespace {

using Clock = std::chrono::steady_clock;

/// Shows nothing, and closes each dialog with its first message.
class Nobody : public tarnel::Presenter {
  public:
    bool ready() override { return true; }

    bool open(const tarnel::DialogView& dialog) override {
        return PostMessageA(dialog.window, WM_CLOSE, 0, 0) != FALSE;
    }

    void update(const tarnel::DialogView&) override {}

    bool ask(const tarnel::MessageBoxView&) override { return false; }

    void close(HWND) override {}
};

/// Notes when its first posted message comes.
class Dialog : public CComSettingDlg {
  public:
    using CComSettingDlg::CComSettingDlg;

    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_CLOSE) {
            handled = Clock::now();
        }
        return CComSettingDlg::WindowProc(message, wparam, lparam);
    }

    Clock::time_point handled;
};

/// Milliseconds for one dialog.
double open_dialog(CComDeviceConfiguration& configuration) {
    Dialog dialog(configuration, 0, CComSettingDlg::usual_template, nullptr);
    const auto start = Clock::now();
    if (dialog.DoModal() != IDCANCEL) {
        std::abort();
    }
    return std::chrono::duration<double, std::milli>(dialog.handled - start).count();
}

} // namespace

int main() {
    tarnel::set_presenter(std::make_shared<Nobody>());
    CComDeviceConfiguration configuration;
    bench::report("g.dialog.open.first", "tarnel", open_dialog(configuration), "ms");
    std::vector<double> later;
    for (int i = 0; i < 1001; ++i) {
        later.push_back(open_dialog(configuration));
    }
    bench::report("g.dialog.open", "tarnel", bench::median(later), "ms");
}
