#include "platform/base/last_error.h"
#include "platform/messages/queue.h"
#include "platform/messages/window.h"

using tarnel::MessageQueue;
using tarnel::owner_of;

BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    MessageQueue* queue = window ? owner_of(window) : MessageQueue::current();
    if (!queue && !window) {
        return FALSE;
    }
    const DWORD error =
        queue ? queue->post(window, message, wparam, lparam) : ERROR_INVALID_WINDOW_HANDLE;
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}

BOOL PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT remove) {
    const tarnel::MessageFilter filter{window, first, last};
    const bool take = (remove & PM_REMOVE) != 0;
    MessageQueue* owner = window ? owner_of(window) : MessageQueue::current();
    MessageQueue* own = MessageQueue::existing();
    if (!owner) {
        if (window) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        }
        return FALSE;
    }
    if (owner != own && own) {
        own->run_sent();
    }
    if (owner != own) {
        return owner->find(filter, take, *message);
    }
    if (own->look(filter, take, *message)) {
        return TRUE;
    }
    return own->bell()->serve_watches() && own->look(filter, take, *message);
}

BOOL GetMessageA(MSG* message, HWND window, UINT first, UINT last) {
    MessageQueue* own = MessageQueue::current();
    if (!own) {
        return -1;
    }
    tarnel::Sleeper sleeper(*own->bell(), tarnel::Sleeper::Kind::serving_messages);
    const auto never = tarnel::Deadline::after(INFINITE);
    for (;; sleeper.sleep(never)) {
        if (window && (owner_of(window) != own || !IsWindow(window))) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return -1;
        }
        if (own->look({window, first, last}, true, *message)) {
            return message->message != WM_QUIT;
        }
    }
}

LRESULT DispatchMessageA(const MSG* message) {
    return message->hwnd ? tarnel::call_window(message->hwnd, message->message, message->wParam,
                                               message->lParam)
                         : 0;
}

void PostQuitMessage(int exit_code) {
    if (MessageQueue* own = MessageQueue::current()) {
        own->post_quit(exit_code);
    }
}
