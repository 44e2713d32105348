#include "platform/windows/edit.h"

#include "platform/windows/control_messages.h"
#include "platform/windows/up_down.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tarnel {

namespace {

constexpr std::size_t max_length = 30'000;

/// The border between characters at `position` or, within a character of UTF-8, before it.
std::size_t character_border(std::string_view text, std::size_t position) {
    position = std::min(position, text.size());
    while (position > 0 && position < text.size() && (text[position] & 0xC0) == 0x80) {
        --position;
    }
    return position;
}

std::string fitting(std::string text) {
    text.resize(character_border(text, max_length));
    return text;
}

NewWindow with_fitting_text(NewWindow what) {
    what.text = fitting(std::move(what.text));
    return what;
}

} // namespace

Edit::Edit(const NewWindow& what) : Window(with_fitting_text(what)) {}

void Edit::type(std::string_view typed) {
    std::string fits = fitting(std::string(typed.substr(0, typed.find('\0'))));
    if (fits != text()) {
        const std::size_t end = fits.size();
        change_text(std::move(fits), end);
    }
}

LRESULT Edit::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_SETTEXT:
        change_text(fitting(lparam ? reinterpret_cast<LPCSTR>(lparam) : ""), 0);
        return TRUE;
    case EM_GETSEL:
        return MAKELPARAM(static_cast<int>(selection_start_), static_cast<int>(selection_end_));
    case EM_SETSEL:
        select(static_cast<int>(wparam), static_cast<int>(lparam));
        return 0;
    case WM_KEYDOWN:
        if (step_arrows(static_cast<UINT>(wparam))) {
            return 0;
        }
        break;
    default:
        break;
    }
    return Window::handle_message(message, wparam, lparam);
}

void Edit::describe(ControlView& view) const {
    Window::describe(view);
    view.selection_start = static_cast<int>(selection_start_);
    view.selection_end = static_cast<int>(selection_end_);
}

void Edit::change_text(std::string text, std::size_t cursor) {
    selection_start_ = selection_end_ = cursor;
    set_text(std::move(text));
    notify_parent(EN_CHANGE);
}

/// To -1: up to the end. From -1: nothing, with the cursor where the selection ended.
void Edit::select(int from, int to) {
    if (from < 0) {
        selection_start_ = selection_end_;
    } else {
        const std::size_t one = character_border(text(), static_cast<std::size_t>(from));
        const std::size_t other = character_border(text(), static_cast<std::size_t>(to));
        std::tie(selection_start_, selection_end_) = std::minmax(one, other);
    }
    changed();
}

/// Whether the key is an arrow for an up-down control at the box.
bool Edit::step_arrows(UINT key) {
    UpDown* const arrows = key == VK_UP || key == VK_DOWN ? UpDown::stepping(*this) : nullptr;
    if (arrows) {
        const InUse in_use(*arrows);
        arrows->step(key == VK_UP ? 1 : -1);
    }
    return arrows != nullptr;
}

} // namespace tarnel
