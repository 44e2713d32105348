#pragma once

#include "platform/messages/message.h"
#include "platform/messages/window.h"

#include <functional>

namespace support {

/// A window of the constructing thread whose messages a function handles.
class MessageWindow {
  public:
    using Handler = std::function<LRESULT(UINT message, WPARAM wparam, LPARAM lparam)>;

    explicit MessageWindow(Handler handler, HWND parent = nullptr)
        : handle(tarnel::create_window(&MessageWindow::handle_message, this, parent)),
          handler_(std::move(handler)) {}

    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    ~MessageWindow() {
        if (IsWindow(handle)) {
            DestroyWindow(handle);
        }
    }

    const HWND handle;

  private:
    static LRESULT handle_message(void* self, HWND, UINT message, WPARAM wparam, LPARAM lparam) {
        return static_cast<MessageWindow*>(self)->handler_(message, wparam, lparam);
    }

    Handler handler_;
};

inline LRESULT ignore(UINT, WPARAM, LPARAM) {
    return 0;
}

} // namespace support
