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

thread_local constinit MessageQueue* own_queue = nullptr;

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

MessageQueue* MessageQueue::existing() {
    return own_queue;
}

MessageQueue* MessageQueue::current() {
    if (own_queue) {
        return own_queue;
    }
    ThreadState& thread = ThreadState::current();
    if (!thread.doorbell()) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    own_queue = &take_queue();
    const std::lock_guard guard(own_queue->queue_lock_);
    own_queue->bell_ = thread.doorbell();
    thread.at_end(&MessageQueue::thread_ended, own_queue);
    return own_queue;
}

void MessageQueue::thread_ended(void* context) {
    MessageQueue& queue = *static_cast<MessageQueue*>(context);
    while (queue.windows_) {
        queue.remove_window(*queue.windows_);
    }
    {
        const std::lock_guard guard(queue.queue_lock_);
        queue.bell_.reset();
        queue.posted_.clear();
        queue.new_input_ = 0;
        queue.quit_code_.reset();
    }
    own_queue = nullptr;
    give_back_queue(queue);
}

bool MessageQueue::owns(HWND window) const {
    const WindowSlot* slot = window_slot(window);
    return slot && slot->handle.load(std::memory_order_relaxed) == window &&
           slot->owner.load(std::memory_order_relaxed) == this;
}

/// Under the queue's lock: notes new input. The bell that results is to be written to without it.
std::shared_ptr<Doorbell> MessageQueue::announce(DWORD kind) {
    new_input_ |= kind;
    return bell_->mark_rung() ? bell_ : nullptr;
}

DWORD MessageQueue::post(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const MSG posted{window, message, wparam, lparam, GetTickCount(), {}};
    std::shared_ptr<Doorbell> bell;
    {
        const std::lock_guard guard(queue_lock_);
        if (window && !owns(window)) {
            return ERROR_INVALID_WINDOW_HANDLE;
        }
        if (!posted_.push(posted)) {
            return ERROR_NOT_ENOUGH_QUOTA;
        }
        bell = announce(QS_POSTMESSAGE);
    }
    if (bell) {
        bell->write_ring();
    }
    return ERROR_SUCCESS;
}

std::optional<MSG> MessageQueue::take(const MessageFilter& filter, bool remove) {
    if (filter.first != 0 && filter.first == filter.last && !posted_.may_hold(filter.first)) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < posted_.size(); ++i) {
        const MSG message = posted_[i];
        if (!filter.passes(message.message) ||
            (filter.window && !is_inside(message.hwnd, filter.window))) {
            continue;
        }
        if (remove) {
            posted_.erase(i);
        }
        return message;
    }
    return std::nullopt;
}

std::optional<MSG> MessageQueue::find(const MessageFilter& filter, bool remove) {
    const std::lock_guard guard(queue_lock_);
    return owns(filter.window) ? take(filter, remove) : std::nullopt;
}

std::optional<MSG> MessageQueue::look(const MessageFilter& filter, bool remove) {
    std::unique_lock guard(queue_lock_);
    if (sent_) {
        guard.unlock();
        run_sent();
        guard.lock();
    }
    // What was sent since then has not been run, and so stays new.
    new_input_ = sent_ ? QS_SENDMESSAGE : 0;
    if (auto message = take(filter, remove)) {
        return message;
    }
    if (!quit_code_) {
        return std::nullopt;
    }
    const auto code = static_cast<WPARAM>(std::int64_t{*quit_code_});
    if (remove) {
        quit_code_.reset();
    }
    return MSG{nullptr, WM_QUIT, code, 0, GetTickCount(), {}};
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
