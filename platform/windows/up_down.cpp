#include "platform/windows/up_down.h"

#include "platform/windows/control_messages.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace tarnel {

namespace {

/// A whole number between blanks; nothing for anything else.
std::optional<int> number_in(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    text = text.substr(std::min(first, text.size()), text.find_last_not_of(' ') - first + 1);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

} // namespace

UpDown* UpDown::stepping(const Window& edit) {
    if (edit.parent()) {
        for (Window* sibling : edit.parent()->children()) {
            auto* const arrows = dynamic_cast<UpDown*>(sibling);
            if (arrows && arrows->buddy_ == edit.handle() && arrows->takes_input() &&
                (arrows->style() & UDS_ARROWKEYS) != 0) {
                return arrows;
            }
        }
    }
    return nullptr;
}

void UpDown::step(int steps) {
    const int upwards = std::max(steps, -std::numeric_limits<int>::max());
    const int delta = maximum_ < minimum_ ? -upwards : upwards;
    read_buddy();
    if (parent_agrees(delta)) {
        set_position(after_step(delta));
    }
}

LRESULT UpDown::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_CREATE:
        take_buddy_before();
        break;
    case UDM_SETRANGE:
        return set_range(static_cast<short>(HIWORD(lparam)), static_cast<short>(LOWORD(lparam)));
    case UDM_SETRANGE32:
        return set_range(static_cast<int>(wparam), static_cast<int>(lparam));
    case UDM_GETRANGE:
        return MAKELPARAM(maximum_, minimum_);
    case UDM_SETPOS:
        return set_position(static_cast<short>(LOWORD(lparam)));
    case UDM_SETPOS32:
        return set_position(static_cast<int>(lparam));
    case UDM_GETPOS:
        return get_position(nullptr);
    case UDM_GETPOS32:
        get_position(reinterpret_cast<BOOL*>(lparam));
        return position_;
    case UDM_SETBUDDY:
        return reinterpret_cast<LRESULT>(set_buddy(reinterpret_cast<HWND>(wparam)));
    default:
        break;
    }
    return Window::handle_message(message, wparam, lparam);
}

void UpDown::describe(ControlView& view) const {
    Window::describe(view);
    view.minimum = minimum_;
    view.maximum = maximum_;
    view.position = position_;
    view.buddy = buddy_;
}

bool UpDown::parent_agrees(int delta) const {
    const NMUPDOWN notice{{handle(), id(), UDN_DELTAPOS}, position_, delta};
    return !parent() || SendMessageA(parent()->handle(), WM_NOTIFY, id(),
                                     reinterpret_cast<LPARAM>(&notice)) == 0;
}

std::int64_t UpDown::after_step(int delta) const {
    const auto [low, high] = std::minmax({minimum_, maximum_});
    const std::int64_t next = std::int64_t{position_} + delta;
    if ((style() & UDS_WRAP) != 0 && delta > 0 && next > high) {
        return low;
    }
    if ((style() & UDS_WRAP) != 0 && delta < 0 && next < low) {
        return high;
    }
    return next;
}

/// To the nearest in the range; the old one. The control may be gone afterwards.
int UpDown::set_position(std::int64_t position) {
    const auto [low, high] = std::minmax({minimum_, maximum_});
    const auto nearest = std::clamp<std::int64_t>(position, low, high);
    const int old = std::exchange(position_, static_cast<int>(nearest));
    changed();
    write_buddy();
    return old;
}

/// As UDM_GETPOS gives it. `failed`, unless null, tells whether the buddy shows no position.
LRESULT UpDown::get_position(BOOL* failed) {
    const bool valid = read_buddy();
    if (failed) {
        *failed = !valid;
    }
    return MAKELPARAM(position_, valid ? 0 : 1);
}

LRESULT UpDown::set_range(int minimum, int maximum) {
    minimum_ = minimum;
    maximum_ = maximum;
    changed();
    return 0;
}

/// The old one.
HWND UpDown::set_buddy(HWND handle) {
    const HWND old = std::exchange(buddy_, handle);
    Window* const buddy = Window::of(handle);
    if (buddy && handle != old) {
        dock(*buddy);
    }
    changed();
    return old;
}

void UpDown::take_buddy_before() {
    if (!parent() || (style() & UDS_AUTOBUDDY) == 0) {
        return;
    }
    const auto& siblings = parent()->children();
    const auto own = std::find(siblings.begin(), siblings.end(), this);
    if (own != siblings.begin()) {
        set_buddy((*std::prev(own))->handle());
    }
}

/// Takes an edge of the buddy's rectangle, as the style says; the rest is left to the buddy.
void UpDown::dock(Window& buddy) {
    RECT left = buddy.rectangle();
    RECT right = left;
    const LONG width = std::min(rectangle().right - rectangle().left, left.right - left.left);
    if ((style() & UDS_ALIGNRIGHT) != 0) {
        left.right = right.left = right.right - width;
        buddy.move(left);
        move(right);
    } else if ((style() & UDS_ALIGNLEFT) != 0) {
        left.right = right.left = left.left + width;
        buddy.move(right);
        move(left);
    }
}

/// Follows the number that has been typed there. False when there is no position of the range, and
/// the last one stays.
bool UpDown::read_buddy() {
    const Window* const buddy = Window::of(buddy_);
    if (!buddy || (style() & UDS_SETBUDDYINT) == 0) {
        return buddy != nullptr;
    }
    const auto [low, high] = std::minmax({minimum_, maximum_});
    const std::optional<int> typed = number_in(buddy->text());
    if (!typed || *typed < low || *typed > high) {
        return false;
    }
    position_ = *typed;
    return true;
}

/// A text that stays is not written again: the application would hear of a change.
void UpDown::write_buddy() const {
    const Window* const buddy = Window::of(buddy_);
    const std::string digits = std::to_string(position_);
    if (buddy && (style() & UDS_SETBUDDYINT) != 0 && buddy->text() != digits) {
        SendMessageA(buddy_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(digits.c_str()));
    }
}

} // namespace tarnel
