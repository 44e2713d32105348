#include "platform/messages/window.h"

#include "platform/base/last_error.h"
#include "platform/messages/queue.h"

namespace tarnel {
namespace {

/// The place of a window that belongs to the calling thread, or null.
WindowSlot* own_window(HWND window) {
    WindowSlot* slot = window_slot(window);
    // No other thread's window has this handle or this owner, so what is read here is our own.
    const bool own = slot && slot->handle.load(std::memory_order_relaxed) == window &&
                     slot->owner.load(std::memory_order_relaxed) == MessageQueue::existing();
    return own ? slot : nullptr;
}

void destroy(WindowSlot& slot, HWND window) {
    slot.destroying = true;
    call_window(window, WM_DESTROY, 0, 0);
    MessageQueue& queue = *MessageQueue::existing();
    while (WindowSlot* child = queue.child_of(slot)) {
        destroy(*child, child->handle.load(std::memory_order_relaxed));
    }
    call_window(window, WM_NCDESTROY, 0, 0);
    queue.remove_window(slot);
}

} // namespace

LRESULT call_window(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const WindowSlot* slot = own_window(window);
    if (!slot) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    return slot->procedure(slot->context, window, message, wparam, lparam);
}

void MessageQueue::add_window(WindowSlot& slot, HWND handle) {
    slot.destroying = false;
    slot.previous = nullptr;
    slot.next = windows_;
    if (windows_) {
        windows_->previous = &slot;
    }
    windows_ = &slot;
    const std::lock_guard guard(queue_lock_);
    slot.handle.store(handle, std::memory_order_relaxed);
    slot.owner.store(this, std::memory_order_release);
}

void MessageQueue::remove_window(WindowSlot& slot) {
    (slot.previous ? slot.previous->next : windows_) = slot.next;
    if (slot.next) {
        slot.next->previous = slot.previous;
    }
    SentMessage* unanswered = nullptr;
    {
        const std::lock_guard guard(queue_lock_);
        const HWND handle = slot.handle.exchange(nullptr);
        slot.owner.store(nullptr);
        posted_.purge(handle);
        unanswered = unlink_sent(handle);
    }
    while (unanswered) {
        SentMessage& message = *unanswered;
        unanswered = message.next;
        message.sender.complete(message, 0);
    }
    give_back_window_slot(slot);
}

WindowSlot* MessageQueue::child_of(const WindowSlot& parent) {
    for (WindowSlot* slot = windows_; slot; slot = slot->next) {
        if (slot->parent == &parent && !slot->destroying) {
            return slot;
        }
    }
    return nullptr;
}

HWND create_window(WindowProcedure procedure, void* context, HWND parent,
                   void (*abandon)(void* context)) {
    const WindowSlot* above = parent ? own_window(parent) : nullptr;
    if (!procedure || (parent && (!above || above->destroying))) {
        SetLastError(parent ? ERROR_INVALID_WINDOW_HANDLE : ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    MessageQueue* queue = MessageQueue::current();
    if (!queue) {
        return nullptr;
    }
    HWND handle = nullptr;
    WindowSlot* slot = take_window_slot(handle);
    if (!slot) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    slot->parent = above;
    slot->procedure = procedure;
    slot->context = context;
    slot->abandon = abandon;
    queue->add_window(*slot, handle);
    return handle;
}

void* own_window_context(HWND window, WindowProcedure procedure) {
    const WindowSlot* slot = own_window(window);
    return slot && slot->procedure == procedure ? slot->context : nullptr;
}

} // namespace tarnel

BOOL IsWindow(HWND window) {
    const tarnel::WindowSlot* slot = tarnel::window_slot(window);
    return slot && slot->handle.load(std::memory_order_acquire) == window;
}

BOOL DestroyWindow(HWND window) {
    tarnel::WindowSlot* slot = tarnel::own_window(window);
    if (!slot || slot->destroying) {
        SetLastError(IsWindow(window) && !slot ? ERROR_ACCESS_DENIED : ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    tarnel::destroy(*slot, window);
    return TRUE;
}
