#include "platform/threads/wait.h"

#include "platform/threads/handle_table.h"
#include "platform/threads/thread_state.h"
#include "platform/threads/wait_links.h"

#include <algorithm>

namespace tarnel {

bool WaitLinks::find(DWORD count, const HANDLE* handles) {
    if (count > links_.size() || (count > 0 && !handles)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    for (; count_ < count; ++count_) {
        links_[count_].object = find_handle(handles[count_]);
        if (!links_[count_].object) {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
    }
    return true;
}

bool WaitLinks::repeated() const {
    const auto same = [](const WaitLink& a, const WaitLink& b) { return a.object == b.object; };
    for (std::size_t i = 0; i < count_; ++i) {
        const auto rest = std::span(links_).subspan(i + 1, count_ - i - 1);
        if (std::ranges::any_of(rest, [&](const WaitLink& l) { return same(l, links_[i]); })) {
            return true;
        }
    }
    return false;
}

DWORD run_plain_wait(Wait& wait, const Deadline& deadline) {
    auto result = wait.try_now();
    Sources sources;
    if (!result) {
        wait.gather(sources);
    }
    // What has sources is served once even by a wait that only wants to look.
    if (!result && (!deadline.passed() || !sources.all().empty())) {
        const auto& bell = ThreadState::current().doorbell();
        if (!bell) {
            SetLastError(ERROR_NO_SYSTEM_RESOURCES);
            return WAIT_FAILED;
        }
        Sleeper sleeper(*bell, Sleeper::Kind::plain);
        result = wait.enlist(bell);
        while (!result) {
            wait.gather(sources);
            sleeper.sleep(deadline, sources);
            result = wait.result();
            if (deadline.passed()) {
                break;
            }
        }
        result = wait.withdraw();
    }
    return result ? WAIT_OBJECT_0 + static_cast<DWORD>(*result) : WAIT_TIMEOUT;
}

} // namespace tarnel

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    tarnel::WaitLink link;
    link.object = tarnel::find_handle(handle);
    if (!link.object) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    tarnel::Wait wait(std::span(&link, 1), false);
    return run_plain_wait(wait, tarnel::Deadline::after(milliseconds));
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
    tarnel::WaitLinks objects;
    if (!objects.find(count, handles)) {
        return WAIT_FAILED;
    }
    if (count == 0 || (all && objects.repeated())) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    tarnel::Wait wait(objects.links(), all != FALSE);
    return run_plain_wait(wait, tarnel::Deadline::after(milliseconds));
}
