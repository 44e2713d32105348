#include "platform/desktop/key_grab_x11.h"

namespace tarnel {
namespace {

/// Calls `act` with the modifiers together with each selection of the locks.
template <typename Action>
void for_each_lock(std::uint16_t modifiers, unsigned locks, Action act) {
    for (unsigned some = locks;; some = (some - 1) & locks) {
        act(static_cast<std::uint16_t>(modifiers | some));
        if (some == 0) {
            return;
        }
    }
}

} // namespace

bool grab_key(X11Connection& connection, const KeyCombination& combination, unsigned locks) {
    std::vector<xcb_void_cookie_t> requests;
    for_each_lock(combination.modifiers, locks, [&](std::uint16_t modifiers) {
        requests.push_back(::xcb_grab_key_checked(connection.get(), 0, connection.root(), modifiers,
                                                  combination.code, XCB_GRAB_MODE_ASYNC,
                                                  XCB_GRAB_MODE_ASYNC));
    });

    const bool answered = connection.sync();
    bool granted = answered;
    for (const xcb_void_cookie_t request : requests) {
        if (answered) {
            const X11Reply<xcb_generic_error_t> error(
                ::xcb_request_check(connection.get(), request));
            granted = granted && !error;
        } else {
            ::xcb_discard_reply(connection.get(), request.sequence);
        }
    }
    if (!granted) {
        ungrab_key(connection, combination, locks);
        connection.sync();
    }
    return granted;
}

void ungrab_key(X11Connection& connection, const KeyCombination& combination, unsigned locks) {
    if (combination.code != 0) {
        for_each_lock(combination.modifiers, locks, [&](std::uint16_t modifiers) {
            ::xcb_ungrab_key(connection.get(), combination.code, connection.root(), modifiers);
        });
    }
}

} // namespace tarnel
