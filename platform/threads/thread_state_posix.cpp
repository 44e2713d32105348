#include "platform/threads/thread_object.h"
#include "platform/threads/thread_state.h"

#include <pthread.h>

#include <atomic>

namespace tarnel {
namespace {

/// A key rather than a thread-local object with a destructor: its function runs after all of
/// those, so that they can still call the layer, and never for the main thread, whose state the
/// libraries above need while they are unloaded at the end of the process.
pthread_key_t make_key(void (*end)(void*)) {
    pthread_key_t key{};
    if (::pthread_key_create(&key, end) != 0) {
        std::terminate(); // only when a program has used up all 1024 keys before
    }
    return key;
}

thread_local constinit ThreadState* current_state = nullptr;

std::atomic<DWORD> last_thread_id = 0;

} // namespace

ThreadState::ThreadState() : id_(++last_thread_id) {}

ThreadState::~ThreadState() = default;

ThreadState& ThreadState::current() {
    return current_state ? *current_state : *make();
}

ThreadState* ThreadState::make() {
    static const pthread_key_t key = make_key(&ThreadState::end);
    current_state = new ThreadState;
    ::pthread_setspecific(key, current_state);
    return current_state;
}

const std::shared_ptr<Doorbell>& ThreadState::doorbell() {
    if (!doorbell_) {
        doorbell_ = Doorbell::make();
    }
    return doorbell_;
}

void ThreadState::end(void* context) {
    auto* state = static_cast<ThreadState*>(context);
    if (state->end_hook_) {
        state->end_hook_(state->end_context_);
    }
    const std::shared_ptr<Thread> thread = std::move(state->thread_);
    current_state = nullptr;
    delete state;
    if (thread) {
        thread->signal_end();
    }
}

} // namespace tarnel
