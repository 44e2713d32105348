#pragma once

#include "platform/base/types.h"

// A class's table of messages and their handlers. A message is looked up in the table of the
// object's own class first, then in those of its bases; the first entry that fits handles it, and
// what none handles is for the window's own class.

class CWnd;

/// One entry. `registered`, unless null, names the message instead of `message`; `code` and `id`
/// count for WM_COMMAND alone.
struct AFX_MSGMAP_ENTRY {
    UINT message;
    const UINT* registered;
    UINT code;
    UINT id;
    LRESULT (*handle)(CWnd& window, WPARAM wparam, LPARAM lparam); ///< null in the last entry
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*base)(); ///< null for the root
    const AFX_MSGMAP_ENTRY* entries;
};

namespace tarnel {

/// Calls a member function as its message wants it; the object may be gone afterwards.
template <typename Class, auto handler>
struct Handler {
    static Class& object(CWnd& window) { return static_cast<Class&>(window); }

    static LRESULT message(CWnd& window, WPARAM wparam, LPARAM lparam) {
        return (object(window).*handler)(wparam, lparam);
    }

    static LRESULT command(CWnd& window, WPARAM, LPARAM) {
        (object(window).*handler)();
        return 1;
    }

    static LRESULT size(CWnd& window, WPARAM wparam, LPARAM lparam) {
        (object(window).*handler)(static_cast<UINT>(wparam), LOWORD(lparam), HIWORD(lparam));
        return 0;
    }
};

} // namespace tarnel

/// In a class: it has a table. What follows is protected.
#define DECLARE_MESSAGE_MAP()                                                                      \
  protected:                                                                                       \
    static const AFX_MSGMAP* GetThisMessageMap();                                                  \
    const AFX_MSGMAP* GetMessageMap() const override;

/// The table itself: entries of the macros below, closed by END_MESSAGE_MAP.
#define BEGIN_MESSAGE_MAP(class_name, base_name)                                                   \
    const AFX_MSGMAP* class_name::GetMessageMap() const {                                          \
        return GetThisMessageMap();                                                                \
    }                                                                                              \
    const AFX_MSGMAP* class_name::GetThisMessageMap() {                                            \
        using ThisClass [[maybe_unused]] = class_name;                                             \
        using BaseClass = base_name;                                                               \
        static constexpr AFX_MSGMAP_ENTRY entries[] = {

#define END_MESSAGE_MAP()                                                                          \
    { 0, nullptr, 0, 0, nullptr }                                                                  \
    }                                                                                              \
    ;                                                                                              \
    static constexpr AFX_MSGMAP map = {&BaseClass::GetThisMessageMap, entries};                    \
    return &map;                                                                                   \
    }

/// `LRESULT handler(WPARAM, LPARAM)`.
#define ON_MESSAGE(number, handler)                                                                \
    {number, nullptr, 0, 0, &tarnel::Handler<ThisClass, &ThisClass::handler>::message},

/// The same for a message whose number stands in the variable `number` since it was registered.
#define ON_REGISTERED_MESSAGE(number, handler)                                                     \
    {0, &number, 0, 0, &tarnel::Handler<ThisClass, &ThisClass::handler>::message},

/// `void OnSize(UINT type, int width, int height)`.
#define ON_WM_SIZE()                                                                               \
    {WM_SIZE, nullptr, 0, 0, &tarnel::Handler<ThisClass, &ThisClass::OnSize>::size},

/// `void handler()`.
#define ON_COMMAND(id, handler)                                                                    \
    {WM_COMMAND, nullptr, 0, id, &tarnel::Handler<ThisClass, &ThisClass::handler>::command},

#define ON_BN_CLICKED(id, handler) ON_COMMAND(id, handler)
