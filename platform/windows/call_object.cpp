#include "platform/windows/call_object.h"

#include "platform/base/exceptions.h"
#include "platform/windows/message_box.h"

namespace tarnel {
namespace {

LRESULT answer_escaped(CException* exception, UINT message) {
    const bool told = exception->IsKindOf(RUNTIME_CLASS(CUserException)) != FALSE;
    exception->Delete();
    if (message == WM_CREATE) {
        return -1;
    }
    const bool command = message == WM_COMMAND;
    if (!told) {
        AfxMessageBox(command ? "Command failed." : "Internal application error.");
    }
    return command ? 1 : 0;
}

} // namespace

LRESULT call_object(CWnd& object, UINT message, WPARAM wparam, LPARAM lparam) {
    try {
        return object.WindowProc(message, wparam, lparam);
    } catch (CException* exception) {
        return answer_escaped(exception, message); // the object may be gone
    }
}

} // namespace tarnel
