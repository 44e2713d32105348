#include "platform/messages/queue.h"

#include "platform/base/last_error.h"
#include "platform/base/never_destroyed.h"
#include "platform/messages/wait_messages.h"
#include "platform/threads/clock.h"
#include "platform/threads/thread_state.h"

#include <deque>
#include <vector>

namespace tarnel {
namespace {

struct Pool {
    std::mutex pool_lock;
    std::deque<MessageQueue> all;
    std::vector<MessageQueue*> free;
};

/// A queue that is never empty must not keep the thread from its watches.
constexpr unsigned looks_between_watches = 32;

Pool& pool() {
    static NeverDestroyed<Pool> instance;
    return instance.get();
}

MessageQueue& take_queue() {
    Pool& queues = pool();
    const std::lock_guard guard(queues.pool_lock);
    if (queues.free.empty()) {
        return queues.all.emplace_back();
    }
    MessageQueue& queue = *queues.free.back();
    queues.free.pop_back();
    return queue;
}

void give_back_queue(MessageQueue& queue) {
    Pool& queues = pool();
    const std::lock_guard guard(queues.pool_lock);
    queues.free.push_back(&queue);
}

/// `window` is `filter` or stands below it. Both belong to the same thread and live.
bool is_inside(HWND window, HWND filter) {
    if (window == filter) {
        return true;
    }
    const WindowSlot* slot = window_slot(window);
    while (slot && slot->parent) {
        slot = slot->parent;
        if (slot->handle.load(std::memory_order_relaxed) == filter) {
            return true;
        }
    }
    return false;
}

} // namespace

thread_local constinit MessageQueue* MessageQueue::own_queue_ = nullptr;

MessageQueue* MessageQueue::make() {
    ThreadState& thread = ThreadState::current();
    if (!thread.doorbell()) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    own_queue_ = &take_queue();
    const std::lock_guard guard(own_queue_->queue_lock_);
    own_queue_->bell_ = thread.doorbell();
    thread.at_end(&MessageQueue::thread_ended, own_queue_);
    return own_queue_;
}

void MessageQueue::thread_ended(void* context) {
    MessageQueue& queue = *static_cast<MessageQueue*>(context);
    while (WindowSlot* left = queue.windows_) {
        void (*const abandon)(void*) = left->abandon;
        void* const window_context = left->context;
        queue.remove_window(*left);
        if (abandon) {
            abandon(window_context);
        }
    }
    {
        const std::lock_guard guard(queue.queue_lock_);
        queue.bell_.reset();
        queue.posted_.clear();
        queue.new_input_ = 0;
        queue.quit_code_.reset();
    }
    own_queue_ = nullptr;
    give_back_queue(queue);
}

DWORD MessageQueue::post(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const DWORD now = GetTickCount();
    std::shared_ptr<Doorbell> bell;
    {
        const std::lock_guard guard(queue_lock_);
        if (window && !owns(window)) {
            return ERROR_INVALID_WINDOW_HANDLE;
        }
        MSG* const posted = posted_.push();
        if (!posted) {
            return ERROR_NOT_ENOUGH_QUOTA;
        }
        posted->hwnd = window;
        posted->message = message;
        posted->wParam = wparam;
        posted->lParam = lparam;
        posted->time = now;
        bell = announce(QS_POSTMESSAGE);
    }
    if (bell) {
        HeldRing::write(std::move(bell));
    }
    return ERROR_SUCCESS;
}

bool MessageQueue::take(const MessageFilter& filter, bool remove, MSG& found) {
    for (std::size_t i = 0; i < posted_.size(); ++i) {
        const MSG& message = posted_[i];
        if (!filter.passes_number(message.message) ||
            (filter.window && !is_inside(message.hwnd, filter.window))) {
            continue;
        }
        found = message;
        if (remove) {
            posted_.erase(i);
        }
        return true;
    }
    return false;
}

bool MessageQueue::find(const MessageFilter& filter, bool remove, MSG& found) {
    const std::lock_guard guard(queue_lock_);
    return owns(filter.window) && take(filter, remove, found);
}

bool MessageQueue::look(const MessageFilter& filter, bool remove, MSG& found) {
    if (++looks_ % looks_between_watches == 0) {
        bell_->serve_watches();
    }
    std::unique_lock guard(queue_lock_);
    if (sent_) {
        guard.unlock();
        run_sent();
        guard.lock();
    }
    // What was sent since then has not been run, and so stays new.
    new_input_ = sent_ ? QS_SENDMESSAGE : 0;
    if (take(filter, remove, found)) {
        return true;
    }
    if (!quit_code_) {
        return false;
    }
    const auto code = static_cast<WPARAM>(std::int64_t{*quit_code_});
    found = {nullptr, WM_QUIT, code, 0, GetTickCount(), {}};
    if (remove) {
        quit_code_.reset();
    }
    return true;
}

void MessageQueue::post_quit(int exit_code) {
    std::shared_ptr<Doorbell> bell;
    {
        const std::lock_guard guard(queue_lock_);
        quit_code_ = exit_code;
        bell = announce(QS_POSTMESSAGE);
    }
    if (bell) {
        bell->write_ring();
    }
}

bool MessageQueue::has_new_input(DWORD mask) {
    const std::lock_guard guard(queue_lock_);
    return (new_input_ & mask) != 0;
}

std::size_t MessageQueue::posted_count() {
    const std::lock_guard guard(queue_lock_);
    return posted_.size();
}

bool MessageQueue::is_idle() {
    const std::lock_guard guard(queue_lock_);
    return posted_.size() == 0 && !sent_ && !quit_code_;
}

MessageQueue* owner_of(HWND window) {
    const WindowSlot* slot = window_slot(window);
    return slot ? slot->owner.load(std::memory_order_acquire) : nullptr;
}

} // namespace tarnel
