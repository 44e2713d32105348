#pragma once

#include "platform/windows/wnd.h"

namespace tarnel {

/// Has the framework's object handle a message. A framework exception that leaves its handler ends
/// here: the person is told, unless that has been done, and the message loop goes on.
LRESULT call_object(CWnd& object, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace tarnel
