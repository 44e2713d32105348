#include "platform/threads/event.h"

#include "platform/threads/handle_table.h"
#include "platform/threads/wait.h"

namespace tarnel {
namespace {

class Event final : public Waitable {
  public:
    Event(bool manual, bool signalled) : manual_(manual), signalled_(signalled) {}

    void set(bool keep) {
        Bells bells;
        const std::lock_guard guard(wait_lock());
        signalled_ = true;
        complete_waits(bells);
        signalled_ = signalled_ && keep;
    }

    void reset() {
        const std::lock_guard guard(wait_lock());
        signalled_ = false;
    }

  private:
    bool is_signalled() const override { return signalled_; }

    void consume() override { signalled_ = manual_; }

    const bool manual_;
    bool signalled_;
};

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
    return tarnel::change_event(event, [](tarnel::Event& it) { it.set(true); });
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
