#include "platform/windows/combo_box_window.h"

#include "platform/base/letter_case.h"
#include "platform/windows/control_messages.h"
#include "platform/windows/dialog_window.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarnel {

namespace {

using List = ComboBoxWindow;

NewWindow closed_list(NewWindow what) {
    what.text.clear();
    what.height = pixels_down(14);
    return what;
}

LPCSTR text_of(LPARAM text) {
    return text ? reinterpret_cast<LPCSTR>(text) : "";
}

bool begins_with(std::string_view entry, std::string_view wanted) {
    return !wanted.empty() && same_but_for_case(entry.substr(0, wanted.size()), wanted);
}

} // namespace

ComboBoxWindow::ComboBoxWindow(const NewWindow& what) : Window(closed_list(what)) {}

void ComboBoxWindow::choose(int position) {
    if (has(position) && position != selection_) {
        select(position);
        notify_parent(CBN_SELCHANGE);
    }
}

constinit const ComboBoxWindow::Message ComboBoxWindow::messages[] = {
    {CB_ADDSTRING, [](List& list, int, LPARAM text) { return list.add(text_of(text)); }},
    {CB_INSERTSTRING,
     [](List& list, int at, LPARAM text) {
         return list.insert(at == -1 ? list.count() : at, text_of(text));
     }},
    {CB_DELETESTRING, [](List& list, int at, LPARAM) { return list.remove(at); }},
    {CB_RESETCONTENT, [](List& list, int, LPARAM) { return list.clear(); }},
    {CB_GETCOUNT, [](List& list, int, LPARAM) { return list.count(); }},
    {CB_GETCURSEL, [](List& list, int, LPARAM) { return list.selection_; }},
    {CB_SETCURSEL, [](List& list, int at, LPARAM) { return list.select(at); }},
    {CB_GETLBTEXT, [](List& list, int at,
                      LPARAM buffer) { return list.copy(at, reinterpret_cast<char*>(buffer)); }},
    {CB_GETLBTEXTLEN, [](List& list, int at, LPARAM) { return list.length_of(at); }},
    {CB_FINDSTRING, [](List& list, int after,
                       LPARAM text) { return list.find(after, text_of(text), begins_with); }},
    {CB_FINDSTRINGEXACT,
     [](List& list, int after, LPARAM text) {
         return list.find(after, text_of(text), same_but_for_case);
     }},
    {CB_SELECTSTRING,
     [](List& list, int after, LPARAM text) { return list.find_and_select(after, text_of(text)); }},
};

LRESULT ComboBoxWindow::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    for (const Message& own : messages) {
        if (own.number == message) {
            return own.run(*this, static_cast<int>(wparam), lparam);
        }
    }
    if (message == WM_SETTEXT) {
        return CB_ERR;
    }
    if (message == WM_KEYDOWN && handle_key(static_cast<UINT>(wparam))) {
        return 0;
    }
    return Window::handle_message(message, wparam, lparam);
}

void ComboBoxWindow::describe(ControlView& view) const {
    Window::describe(view);
    view.items = entries_;
    view.selection = selection_;
}

bool ComboBoxWindow::handle_key(UINT key) {
    if (key != VK_UP && key != VK_DOWN) {
        return false;
    }
    choose(key == VK_UP ? std::max(0, selection_ - 1) : selection_ + 1);
    return true;
}

int ComboBoxWindow::add(std::string text) {
    const bool sorted = (style() & CBS_SORT) != 0;
    const auto place =
        sorted ? std::upper_bound(entries_.begin(), entries_.end(), text, before_but_for_case)
               : entries_.end();
    return insert(static_cast<int>(place - entries_.begin()), std::move(text));
}

/// The entry that is selected stays so, here and below.
int ComboBoxWindow::insert(int position, std::string text) {
    if (position < 0 || position > count()) {
        return CB_ERR;
    }
    entries_.insert(entries_.begin() + position, std::move(text));
    if (position <= selection_) {
        ++selection_;
    }
    changed();
    return position;
}

/// How many are left.
int ComboBoxWindow::remove(int position) {
    if (!has(position)) {
        return CB_ERR;
    }
    entries_.erase(entries_.begin() + position);
    if (position == selection_) {
        select(-1);
    } else if (position < selection_) {
        --selection_;
    }
    changed();
    return count();
}

int ComboBoxWindow::clear() {
    entries_.clear();
    select(-1);
    return 0;
}

/// The first after `after`, then those up to it.
int ComboBoxWindow::find(int after, std::string_view wanted, Matches matches) const {
    const int first = has(after) ? after + 1 : 0;
    for (int i = 0; i < count(); ++i) {
        const int position = (first + i) % count();
        if (matches(entries_[static_cast<std::size_t>(position)], wanted)) {
            return position;
        }
    }
    return CB_ERR;
}

int ComboBoxWindow::find_and_select(int after, std::string_view wanted) {
    const int found = find(after, wanted, begins_with);
    return has(found) ? select(found) : CB_ERR;
}

/// Where there is no such entry, none is selected.
int ComboBoxWindow::select(int position) {
    selection_ = has(position) ? position : CB_ERR;
    set_text(has(position) ? entries_[static_cast<std::size_t>(position)] : std::string());
    return selection_;
}

int ComboBoxWindow::length_of(int position) const {
    return has(position) ? static_cast<int>(entries_[static_cast<std::size_t>(position)].size())
                         : CB_ERR;
}

int ComboBoxWindow::copy(int position, char* buffer) const {
    if (has(position) && buffer) {
        const std::string& entry = entries_[static_cast<std::size_t>(position)];
        std::memcpy(buffer, entry.c_str(), entry.size() + 1);
        return static_cast<int>(entry.size());
    }
    return CB_ERR;
}

} // namespace tarnel
