#include "platform/windows/call_object.h"

#include "platform/base/exceptions.h"
#include "platform/registry/application.h"
#include "platform/windows/message_box.h"

namespace tarnel {
namespace {

/// Of a command the person knows, and is told; anything else is for the application to hear.
LRESULT answer_escaped(CException* exception, const MSG& message) {
    const bool told = exception->IsKindOf(RUNTIME_CLASS(CUserException)) != FALSE;
    const bool command = message.message == WM_COMMAND;
    if (!told && !command) {
        const LRESULT result = answer_exception(exception, message);
        return message.message == WM_CREATE ? -1 : result;
    }
    exception->Delete();
    if (!told) {
        AfxMessageBox("Command failed.");
    }
    return command ? 1 : message.message == WM_CREATE ? -1 : 0;
}

} // namespace

LRESULT call_object(CWnd& object, UINT message, WPARAM wparam, LPARAM lparam) {
    const HWND window = object.m_hWnd;
    try {
        return object.WindowProc(message, wparam, lparam);
    } catch (CException* exception) {
        // The object may be gone.
        return answer_escaped(exception, MSG{window, message, wparam, lparam, 0, {}});
    }
}

} // namespace tarnel
