#include "platform/threads/handle_table.h"
#include "platform/threads/thread.h"
#include "platform/threads/thread_object.h"
#include "platform/threads/thread_state.h"
#include "platform/threads/wait.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <limits>
#include <memory>

namespace tarnel {
namespace {

/// Attributes of a new thread.
class Attributes {
  public:
    explicit Attributes(std::size_t stack_size) {
        ::pthread_attr_init(&attributes_);
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_attr_setsigmask_np(&attributes_, &all);
        if (stack_size > 0) {
            const auto least = static_cast<std::size_t>(PTHREAD_STACK_MIN);
            ::pthread_attr_setstacksize(&attributes_, std::max(stack_size, least));
        }
    }

    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    ~Attributes() { ::pthread_attr_destroy(&attributes_); }

    const pthread_attr_t* get() const { return &attributes_; }

  private:
    pthread_attr_t attributes_{};
};

} // namespace

bool Thread::start(const std::shared_ptr<Thread>& thread, std::size_t stack_size) {
    // The new thread holds its object until it has signalled its end.
    auto own = std::make_unique<std::shared_ptr<Thread>>(thread);
    const Attributes attributes(stack_size);
    // The thread's number is stored before anybody has the handle that asks for it.
    if (::pthread_create(&thread->pthread_, attributes.get(), &Thread::run, own.get()) != 0) {
        return false;
    }
    static_cast<void>(own.release());
    return true;
}

void* Thread::run(void* self) {
    const std::unique_ptr<std::shared_ptr<Thread>> own(static_cast<std::shared_ptr<Thread>*>(self));
    Thread& thread = **own;
    ThreadState::current().signal_at_end(std::move(*own));
    while (const DWORD count = thread.suspended_.load()) {
        thread.suspended_.wait(count);
    }
    thread.result_ = thread.procedure_(thread.argument_);
    return nullptr;
}

DWORD Thread::resume() {
    DWORD count = suspended_.load();
    while (count > 0 && !suspended_.compare_exchange_weak(count, count - 1)) {
    }
    suspended_.notify_all();
    return count;
}

DWORD Thread::exit_code() const {
    const std::lock_guard guard(wait_lock());
    return ended_ ? result_ : STILL_ACTIVE;
}

void Thread::signal_end() {
    Bells bells;
    const std::lock_guard guard(wait_lock());
    ended_ = true;
    complete_waits(bells);
}

void Thread::handle_closed() {
    std::unique_lock guard(wait_lock());
    const bool ended = ended_;
    guard.unlock();
    if (ended) {
        ::pthread_join(pthread_, nullptr);
    } else {
        ::pthread_detach(pthread_);
    }
}

} // namespace tarnel

HANDLE CreateThread(void* attributes, std::size_t stack_size, LPTHREAD_START_ROUTINE procedure,
                    LPVOID argument, DWORD flags, DWORD* id) {
    if (attributes || id || !procedure || (flags & ~CREATE_SUSPENDED) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const DWORD suspended = flags & CREATE_SUSPENDED ? 1 : 0;
    const auto thread = std::make_shared<tarnel::Thread>(procedure, argument, suspended);
    if (!tarnel::Thread::start(thread, stack_size)) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    return tarnel::add_handle(thread);
}

DWORD ResumeThread(HANDLE thread) {
    const auto object = tarnel::find_handle_as<tarnel::Thread>(thread);
    return object ? object->resume() : std::numeric_limits<DWORD>::max();
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* exit_code) {
    const auto object = tarnel::find_handle_as<tarnel::Thread>(thread);
    if (object) {
        *exit_code = object->exit_code();
    }
    return object != nullptr;
}

DWORD GetCurrentThreadId() {
    return tarnel::ThreadState::current().id();
}
