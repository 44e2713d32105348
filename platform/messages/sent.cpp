#include "platform/base/last_error.h"
#include "platform/messages/queue.h"
#include "platform/messages/wait_messages.h"

namespace tarnel {
namespace {

/// Ends a message whatever way its procedure is left.
class Completion {
  public:
    explicit Completion(SentMessage& message) : message_(message) {}

    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    ~Completion() { message_.sender.complete(message_, result); }

    LRESULT result = 0;

  private:
    SentMessage& message_;
};

} // namespace

bool MessageQueue::send(SentMessage& message) {
    std::shared_ptr<Doorbell> bell;
    {
        const std::lock_guard guard(queue_lock_);
        if (!owns(message.window)) {
            return false;
        }
        message.sequence = ++last_sequence_;
        SentMessage** end = &sent_;
        while (*end) {
            end = &(*end)->next;
        }
        *end = &message;
        bell = announce(QS_SENDMESSAGE);
    }
    if (bell) {
        bell->write_ring();
    }
    return true;
}

SentMessage* MessageQueue::next_sent(std::uint64_t last) {
    const std::lock_guard guard(queue_lock_);
    SentMessage* message = sent_;
    if (!message || message->sequence > last) {
        return nullptr;
    }
    sent_ = message->next;
    return message;
}

SentMessage* MessageQueue::unlink_sent(HWND window) {
    SentMessage* unlinked = nullptr;
    for (SentMessage** at = &sent_; *at;) {
        SentMessage* message = *at;
        if (message->window != window) {
            at = &message->next;
            continue;
        }
        *at = message->next;
        message->next = unlinked;
        unlinked = message;
    }
    return unlinked;
}

void MessageQueue::run_sent() {
    std::uint64_t last = 0;
    {
        const std::lock_guard guard(queue_lock_);
        if (!sent_) {
            return;
        }
        last = last_sequence_; // what a fast sender adds meanwhile waits for the next look
    }
    while (SentMessage* message = next_sent(last)) {
        Completion completion(*message);
        completion.result =
            call_window(message->window, message->message, message->wparam, message->lparam);
    }
}

void MessageQueue::complete(SentMessage& message, LRESULT result) {
    std::shared_ptr<Doorbell> bell;
    {
        const std::lock_guard guard(queue_lock_);
        message.result = result;
        message.done = true; // the sender may be gone with it as soon as the lock is free
        if (bell_->mark_rung()) {
            bell = bell_;
        }
    }
    if (bell) {
        bell->write_ring();
    }
}

LRESULT MessageQueue::await(const SentMessage& message) {
    Sleeper sleeper(*bell_, Sleeper::Kind::plain);
    const Deadline never = Deadline::after(INFINITE);
    for (;;) {
        run_sent();
        {
            const std::lock_guard guard(queue_lock_);
            if (message.done) {
                return message.result;
            }
        }
        sleeper.sleep(never);
    }
}

} // namespace tarnel

LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    using namespace tarnel;
    MessageQueue* owner = owner_of(window);
    if (owner && owner == MessageQueue::existing()) {
        return call_window(window, message, wparam, lparam);
    }
    MessageQueue* own = owner ? MessageQueue::current() : nullptr;
    if (owner && !own) {
        return 0;
    }
    if (owner) {
        SentMessage sent{.window = window,
                         .message = message,
                         .wparam = wparam,
                         .lparam = lparam,
                         .sender = *own};
        if (owner->send(sent)) {
            return own->await(sent);
        }
    }
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return 0;
}
