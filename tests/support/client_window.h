#pragma once

#include "platform/windows/wnd.h"

#include <functional>
#include <string>
#include <utility>

namespace support {

/// An application's window as a protocol tells it, on the constructing thread: busy as long as that
/// thread runs no messages.
class ClientWindow : public CWnd {
  public:
    ClientWindow() { CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0); }

    ~ClientWindow() override { DestroyWindow(); }

    /// Handles all that is waiting, and says what has come since the last call: "point 2, track 1".
    std::string told() {
        for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageA(&message);
        }
        return std::exchange(told_, "");
    }

    /// Called when a measured point is announced.
    std::function<void()> on_point;

  protected:
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        for (const auto& [name, number] : names_) {
            if (message == number) {
                told_ += (told_.empty() ? "" : ", ") + std::string(name) + ' ' +
                         std::to_string(static_cast<std::int64_t>(wparam)) +
                         (lparam ? " and more" : "");
                if (on_point && name == names_[0].first && wparam == 2) {
                    on_point();
                }
                return 0;
            }
        }
        return CWnd::WindowProc(message, wparam, lparam);
    }

  private:
    // As an application does it, by the names.
    const std::pair<const char*, UINT> names_[4] = {
        {"point", RegisterWindowMessageA("CMMProtocolMessage")},
        {"track", RegisterWindowMessageA("CMMProtocolTrackPoint")},
        {"modeless", RegisterWindowMessageA("CMMProtocolEnableModeless")},
        {"other", WM_USER}};
    std::string told_;
};

} // namespace support
