#pragma once

#include "platform/windows/window_state.h"

#include <cstdint>

namespace tarnel {

/// A pair of arrows that step a position, and with it the number in an edit box beside them, their
/// buddy. The upper arrow goes towards the maximum, which may be less than the minimum.
class UpDown final : public Window {
  public:
    explicit UpDown(const NewWindow& what) : Window(what) {}

    /// The arrows that the arrow keys in `edit` press; null for none.
    static UpDown* stepping(const Window& edit);

    /// Steps upwards, or downwards when negative, unless the parent objects. The control may be
    /// gone afterwards.
    void step(int steps);

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void describe(ControlView& view) const override;

  private:
    bool parent_agrees(int delta) const;
    std::int64_t after_step(int delta) const;
    int set_position(std::int64_t position);
    LRESULT get_position(BOOL* failed);
    LRESULT set_range(int minimum, int maximum);
    HWND set_buddy(HWND buddy);
    void take_buddy_before();
    void dock(Window& buddy);
    bool read_buddy();
    void write_buddy() const;

    HWND buddy_ = nullptr; ///< may be gone any time
    int minimum_ = 100;
    int maximum_ = 0;
    int position_ = 0;
};

} // namespace tarnel
