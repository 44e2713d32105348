#pragma once

#include "platform/windows/control_messages.h"
#include "platform/windows/window_state.h"

namespace tarnel {

/// A push button, check box or group box, as the type in its style says.
class Button final : public Window {
  public:
    explicit Button(const NewWindow& what) : Window(what) {}

    /// Whether it is to be seen, can be used, and is no mere frame around others.
    bool takes_clicks() const;

    /// Clicks it, if it takes clicks. The button may be gone afterwards.
    void click();

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void describe(ControlView& view) const override;

  private:
    DWORD type() const { return style() & BS_TYPEMASK; }

    void set_check(int check);

    int check_ = BST_UNCHECKED;
};

} // namespace tarnel
