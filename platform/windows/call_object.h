#pragma once

#include "platform/windows/wnd.h"

namespace tarnel {

/// Has the framework's object handle a message. A framework exception that leaves its handler ends
/// here, and the message loop goes on: of a command the person is told, unless that has been done,
/// of anything else the application (CWinApp::ProcessWndProcException).
LRESULT call_object(CWnd& object, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace tarnel
