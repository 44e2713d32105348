#pragma once

#include "platform/modules/dialog_template.h"
#include "platform/windows/window_state.h"

namespace tarnel {

/// A dialog's window: the focus, the keys that move it, and the line to the presenter.
class DialogWindow final : public Window {
  public:
    static constexpr const char* class_of_dialogs = "#32770";

    explicit DialogWindow(const NewWindow& what) : Window(what) {}

    ~DialogWindow() override;

    /// The dialog that `window` stands in, or is; null for none.
    static DialogWindow* around(Window* window);

    HWND focus() const { return focus_; }

    void set_focus(HWND control);

    /// The next control after `from` with a tab stop that can be used, or the one before it; null
    /// for none. A null `from` is before the first.
    Window* next_stop(HWND from, bool back) const;

    /// Moves the focus there as the keys do: an edit box has all its text selected.
    void move_focus(Window* control);

    /// What no control has used for itself: Tab, Enter, Esc.
    void handle_key(UINT key);

    /// The button that Enter presses; 0 for none.
    int default_button() const;

    /// Has the presenter show the dialog, if it does not do so yet; false when it cannot.
    bool open();

    /// The presenter shows nothing any more.
    void forget_presenter() { presenter_.reset(); }

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;

  private:
    void part_changed(Window& part) override;

    DialogView view() const;
    void update_presenter();
    void press_default();
    void cancel();
    void send_command(int id);

    HWND focus_ = nullptr;
    std::shared_ptr<Presenter> presenter_; ///< while it shows the dialog
    std::vector<HWND> unshown_;            ///< controls that have changed since it was told
    bool update_posted_ = false;
};

/// Makes the controls of a template in their order; false when one of them cannot be made.
bool create_controls(const DialogTemplate& what, HWND dialog);

/// Pixels of `units` dialog units, rounded to the nearest.
constexpr int pixels_across(int units) {
    return (units * 6 * 2 + (units < 0 ? -4 : 4)) / 8;
}

constexpr int pixels_down(int units) {
    return (units * 13 * 2 + (units < 0 ? -8 : 8)) / 16;
}

static_assert(pixels_across(223) == 335 && pixels_down(55) == 89);

} // namespace tarnel
