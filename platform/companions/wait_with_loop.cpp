#include "platform/companions/wait_with_loop.h"

#include "platform/base/last_error.h"
#include "platform/messages/wait_messages.h"
#include "platform/threads/clock.h"
#include "platform/windows/modal_loop.h"

#include <chrono>

using tarnel::Deadline;

namespace {

enum class Turn { nothing, dispatched, quit };

Turn dispatch_one() {
    MSG message;
    if (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        return Turn::nothing;
    }
    if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return Turn::quit;
    }
    tarnel::translate_and_dispatch(message);
    return Turn::dispatched;
}

DWORD remaining_milliseconds(const Deadline& deadline) {
    return deadline.endless()
               ? INFINITE
               : static_cast<DWORD>(
                     std::chrono::ceil<std::chrono::milliseconds>(deadline.remaining()).count());
}

/// One message a turn, so that neither the objects nor the deadline wait behind a flood of them.
DWORD wait_and_dispatch(DWORD count, const HANDLE* handles, const Deadline& deadline) {
    for (;;) {
        const Turn turn = dispatch_one();
        if (turn == Turn::quit) {
            return WAIT_QUIT;
        }
        const DWORD limit = turn == Turn::dispatched ? 0 : remaining_milliseconds(deadline);
        const DWORD result = MsgWaitForMultipleObjects(count, handles, FALSE, limit, QS_ALLINPUT);
        if (result < WAIT_OBJECT_0 + count || result == WAIT_FAILED) {
            return result;
        }
        if (deadline.passed()) {
            return WAIT_TIMEOUT;
        }
    }
}

DWORD wait_plainly(DWORD count, const HANDLE* handles, DWORD milliseconds) {
    if (count != 0) {
        return WaitForMultipleObjects(count, handles, FALSE, milliseconds);
    }
    Sleep(milliseconds);
    return WAIT_TIMEOUT;
}

} // namespace

DWORD SafeWaitWithMessageLoop(DWORD count, const HANDLE* handles, DWORD milliseconds, BOOL dispatch,
                              void* reserved) {
    if (reserved) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    return dispatch ? wait_and_dispatch(count, handles, Deadline::after(milliseconds))
                    : wait_plainly(count, handles, milliseconds);
}
