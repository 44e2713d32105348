#pragma once

#include "platform/windows/window_state.h"

namespace tarnel {

/// The window of a message box: waits for the answer, which comes as WM_COMMAND with the button's
/// identifier. The lower half of its style is the MB_ type.
class MessageBoxWindow final : public Window {
  public:
    static constexpr const char* class_of_boxes = "message box";

    explicit MessageBoxWindow(const NewWindow& what) : Window(what) {}

    /// Has the presenter ask; false when nobody can.
    bool ask(const std::string& message);

    /// The button that was pressed first; 0 until then.
    int answer() const { return answer_; }

    /// Answered, or destroyed.
    bool is_over() const { return answer_ != 0 || gone_; }

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;

  private:
    void press(int button);
    void leave();

    std::shared_ptr<Presenter> presenter_; ///< while it asks
    int answer_ = 0;
    bool gone_ = false;
};

/// As MessageBoxA. A child window stands for the window that it is in; one of another thread owns
/// nothing.
int show_message(HWND owner, const std::string& message, const std::string& caption, UINT type);

/// The same in the name of the application, see AfxMessageBox.
int show_message_of_application(HWND owner, const std::string& message, UINT type);

} // namespace tarnel
