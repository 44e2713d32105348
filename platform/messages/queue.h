#pragma once

#include "platform/messages/message_ring.h"
#include "platform/messages/window_table.h"
#include "platform/threads/doorbell.h"

#include <mutex>
#include <optional>

namespace tarnel {

/// Which posted messages a look is for: of a window with its children or of any, in a range of
/// numbers or any.
struct MessageFilter {
    HWND window = nullptr;
    UINT first = 0;
    UINT last = 0;

    bool passes_number(UINT message) const {
        return (first == 0 && last == 0) || (message >= first && message <= last);
    }
};

/// A message on its way from one thread to a window of another. It lives on the sender's stack,
/// which waits until it is done.
struct SentMessage {
    HWND window;
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
    MessageQueue& sender;

    // Under the receiver's lock.
    std::uint64_t sequence = 0;
    SentMessage* next = nullptr;

    // Under the sender's lock.
    LRESULT result = 0;
    bool done = false;
};

/// What is posted and sent to the windows of one thread. Queues are pooled and never freed, like
/// the windows' places and for the same reason.
class MessageQueue {
  public:
    /// The calling thread's; made at the first need. Null when no descriptor is left.
    static MessageQueue* current() { return own_queue_ ? own_queue_ : make(); }

    /// The same without making one.
    static MessageQueue* existing() { return own_queue_; }

    const std::shared_ptr<Doorbell>& bell() const { return bell_; }

    // Any thread. The window must be one that this queue's thread owned a moment ago; whether it
    // still exists is decided here.

    /// ERROR_SUCCESS or why not.
    DWORD post(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    /// False when the window is gone.
    bool send(SentMessage& message);

    /// The first message that passes, if there is one; with `remove` it leaves the queue.
    bool find(const MessageFilter& filter, bool remove, MSG& found);

    /// Ends a message that this queue's thread has sent elsewhere.
    void complete(SentMessage& message, LRESULT result);

    // The queue's own thread.

    /// Runs what has been sent to the thread up to this moment, then does the same as find(): what
    /// is there is no new input any more, and WM_QUIT follows when nothing else passes.
    bool look(const MessageFilter& filter, bool remove, MSG& found);

    void run_sent();

    /// Waits for the end of a message that was sent elsewhere.
    LRESULT await(const SentMessage& message);

    void post_quit(int exit_code);
    bool has_new_input(DWORD mask);
    std::size_t posted_count();

    /// Whether nothing at all is left to be run.
    bool is_idle();

    void add_window(WindowSlot& slot, HWND handle);

    /// The window is dead from here on: its messages vanish.
    void remove_window(WindowSlot& slot);

    /// A window of the thread with this parent, or null.
    WindowSlot* child_of(const WindowSlot& parent);

  private:
    static MessageQueue* make();
    static void thread_ended(void* queue);

    bool owns(HWND window) const {
        const WindowSlot* slot = window_slot(window);
        return slot && slot->handle.load(std::memory_order_relaxed) == window &&
               slot->owner.load(std::memory_order_relaxed) == this;
    }

    /// Under the queue's lock: notes new input. The bell that results is to be written to without
    /// the lock.
    std::shared_ptr<Doorbell> announce(DWORD kind) {
        new_input_ |= kind;
        return bell_->mark_rung() ? bell_ : nullptr;
    }

    bool take(const MessageFilter& filter, bool remove, MSG& found);
    SentMessage* next_sent(std::uint64_t last);
    SentMessage* unlink_sent(HWND window);

    // What every post and look touches lies together.
    alignas(64) std::mutex queue_lock_;
    DWORD new_input_ = 0;
    SentMessage* sent_ = nullptr;
    MessageRing posted_;
    std::shared_ptr<Doorbell> bell_; ///< changed only while the queue has no window
    std::uint64_t last_sequence_ = 0;
    std::optional<int> quit_code_;

    // The owning thread's alone.
    WindowSlot* windows_ = nullptr;
    unsigned looks_ = 0;

    static thread_local constinit MessageQueue* own_queue_ TARNEL_FAST_THREAD_LOCAL;
};

/// The queue of the thread that owns `window`, or owned it a moment ago; null for none.
MessageQueue* owner_of(HWND window);

/// Runs the procedure of a window of the calling thread; 0 with ERROR_INVALID_WINDOW_HANDLE when
/// it is none.
LRESULT call_window(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace tarnel
