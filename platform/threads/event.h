#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Makes an event and returns its handle, to be closed with CloseHandle. A manual event stays
/// signalled and lets every waiter pass until it is reset; an automatic one lets exactly one
/// waiter pass and is reset by that. `attributes` and `name` must be null: events are not shared
/// between processes (null result otherwise).
TARNEL_PLATFORM_API HANDLE CreateEventA(void* attributes, BOOL manual_reset, BOOL initial_state,
                                        LPCSTR name);

TARNEL_PLATFORM_API BOOL SetEvent(HANDLE event);
TARNEL_PLATFORM_API BOOL ResetEvent(HANDLE event);

/// Lets those pass who wait at this moment (an automatic event: one of them), and resets.
TARNEL_PLATFORM_API BOOL PulseEvent(HANDLE event);

/// An event that its object owns.
class TARNEL_PLATFORM_API CEvent {
  public:
    explicit CEvent(BOOL initially_own = FALSE, BOOL manual_reset = FALSE, LPCSTR name = nullptr,
                    void* attributes = nullptr)
        : m_hObject(CreateEventA(attributes, manual_reset, initially_own, name)) {}

    CEvent(const CEvent&) = delete;
    CEvent& operator=(const CEvent&) = delete;
    ~CEvent();

    operator HANDLE() const { return m_hObject; }

    BOOL SetEvent() { return ::SetEvent(m_hObject); }

    BOOL ResetEvent() { return ::ResetEvent(m_hObject); }

    BOOL PulseEvent() { return ::PulseEvent(m_hObject); }

    const HANDLE m_hObject;
};
