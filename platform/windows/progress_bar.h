#pragma once

#include "platform/windows/window_state.h"

namespace tarnel {

/// A bar whose position stays in its range.
class ProgressBar final : public Window {
  public:
    explicit ProgressBar(const NewWindow& what) : Window(what) {}

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void describe(ControlView& view) const override;

  private:
    LRESULT set_range(int minimum, int maximum);
    int set_position(int position);

    int minimum_ = 0;
    int maximum_ = 100;
    int position_ = 0;
};

} // namespace tarnel
