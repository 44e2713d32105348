#include "platform/messages/wait_messages.h"

#include "platform/base/last_error.h"
#include "platform/messages/queue.h"
#include "platform/threads/wait_links.h"

namespace tarnel {
namespace {

/// Completed, new input (the index after the last object), or neither.
std::optional<std::size_t> outcome(Wait& wait, std::size_t count, MessageQueue& queue, DWORD mask) {
    if (const auto result = wait.result()) {
        return result;
    }
    return queue.has_new_input(mask) ? std::optional(count) : std::nullopt;
}

std::optional<std::size_t> run_wait(Wait& wait, std::size_t count, MessageQueue& queue, DWORD mask,
                                    const Deadline& deadline) {
    wait.try_now();
    auto result = outcome(wait, count, queue, mask);
    if (result || deadline.passed()) {
        return result;
    }
    Sleeper sleeper(*queue.bell(), Sleeper::Kind::serving_messages);
    wait.enlist(queue.bell());
    Sources sources;
    while (!(result = outcome(wait, count, queue, mask)) && !deadline.passed()) {
        wait.gather(sources);
        sleeper.sleep(deadline, sources);
    }
    // An object that was signalled at the last moment has been consumed by this wait.
    const auto object = wait.withdraw();
    return object ? object : result;
}

} // namespace
} // namespace tarnel

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds,
                                DWORD mask) {
    if (count >= MAXIMUM_WAIT_OBJECTS || all) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    tarnel::WaitLinks objects;
    tarnel::MessageQueue* queue = tarnel::MessageQueue::current();
    if (!queue || !objects.find(count, handles)) {
        return WAIT_FAILED;
    }
    tarnel::Wait wait(objects.links(), false);
    const auto deadline = tarnel::Deadline::after(milliseconds);
    const auto result = tarnel::run_wait(wait, count, *queue, mask, deadline);
    return result ? WAIT_OBJECT_0 + static_cast<DWORD>(*result) : WAIT_TIMEOUT;
}
