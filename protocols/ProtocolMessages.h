#pragma once

#include "platform/messages/message.h"

namespace tarnel {

/// The number of a registered message, fixed when the library is loaded.
class RegisteredMessage {
  public:
    explicit RegisteredMessage(LPCSTR name) : number_(RegisterWindowMessageA(name)) {}

    operator UINT() const { return number_; }

  private:
    UINT number_;
};

// What a protocol tells its client window. A client registers the same names.

/// "CMMProtocolMessage", posted: a measured point (wParam 2), or an event of the protocol's own.
extern const RegisteredMessage protocol_message;

/// "CMMProtocolTrackPoint", posted: there is a newer tracking point (wParam 1).
extern const RegisteredMessage track_point_message;

/// "CMMProtocolEnableModeless", sent: context menus and modeless dialogs are to be disabled
/// (wParam 0) or enabled again (1).
extern const RegisteredMessage enable_modeless_message;

} // namespace tarnel
