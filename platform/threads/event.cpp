#include "platform/threads/event.h"

#include "platform/threads/event_object.h"
#include "platform/threads/handle_table.h"
#include "platform/threads/wait.h"

namespace tarnel {

void Event::set(bool keep) {
    Bells bells;
    const std::lock_guard guard(wait_lock());
    signalled_ = true;
    complete_waits(bells);
    signalled_ = signalled_ && keep;
}

void Event::reset() {
    const std::lock_guard guard(wait_lock());
    signalled_ = false;
}

void Event::attach(std::shared_ptr<Source> source) {
    Bells bells;
    const std::lock_guard guard(wait_lock());
    source_.swap(source); // the old one goes after the lock
    if (source_) {
        wake_waiters(bells);
    }
}

namespace {

template <typename Change>
BOOL change_event(HANDLE handle, Change change) {
    const auto event = find_handle_as<Event>(handle);
    if (event) {
        change(*event);
    }
    return event != nullptr;
}

} // namespace
} // namespace tarnel

HANDLE CreateEventA(void* attributes, BOOL manual_reset, BOOL initial_state, LPCSTR name) {
    if (attributes || name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return tarnel::add_handle(
        std::make_shared<tarnel::Event>(manual_reset != FALSE, initial_state != FALSE));
}

BOOL SetEvent(HANDLE event) {
    return tarnel::change_event(event, [](tarnel::Event& it) { it.set(); });
}

BOOL ResetEvent(HANDLE event) {
    return tarnel::change_event(event, [](tarnel::Event& it) { it.reset(); });
}

BOOL PulseEvent(HANDLE event) {
    return tarnel::change_event(event, [](tarnel::Event& it) { it.set(false); });
}

CEvent::~CEvent() {
    CloseHandle(m_hObject);
}
