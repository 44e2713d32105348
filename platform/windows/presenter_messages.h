#pragma once

#include "platform/windows/presenter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What goes over the presenter's line (presenter_wire.h), as text and back.

namespace tarnel {

/// `verb` is "open" or "update"; `seen` the number of the last action that the state has taken in.
std::string dialog_message(std::string_view verb, const DialogView& dialog, std::int64_t seen);

std::string question_message(const MessageBoxView& box);

std::string closing_message(HWND window);

/// What the person has done.
struct UserAction {
    std::string verb;
    std::int64_t number = 0;
    HWND window = nullptr;
    int value = 0;
    std::string text;
};

/// Nothing for a line that is no such action.
std::optional<UserAction> read_action(std::string_view line);

/// Does to the window's state what the person has done. A verb that is not known does nothing.
void perform(const UserAction& action);

} // namespace tarnel
