#pragma once

#include "platform/messages/message.h"

namespace tarnel {

/// Offers the message to the windows that it is for, innermost first, and dispatches it unless one
/// of them keeps it.
void translate_and_dispatch(MSG& message);

/// Dispatches the thread's messages until `done` says so, which is asked after each; a change of it
/// that comes with no message must post one. False when WM_QUIT ends it, which is posted again.
bool run_messages_until(bool (*done)(const void* context), const void* context);

/// The innermost window of the calling thread that runs modally; null for none.
HWND modal_window();

/// While it lives, `window` is the thread's innermost modal window, and `owner` is disabled if it
/// was enabled (a null or foreign one is left alone).
class ModalScope {
  public:
    ModalScope(HWND window, HWND owner);

    ~ModalScope() { end(); }

    ModalScope(const ModalScope&) = delete;
    ModalScope& operator=(const ModalScope&) = delete;

    /// Enables the owner; done before the window goes, so that the owner is there to go back to.
    void end();

  private:
    HWND outer_;
    HWND owner_ = nullptr; ///< when this has disabled it
    bool ended_ = false;
};

} // namespace tarnel
