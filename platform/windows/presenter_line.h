#pragma once

#include "platform/threads/watch.h"
#include "platform/windows/presenter_messages.h"
#include "platform/windows/presenter_program.h"

#include <deque>
#include <vector>

namespace tarnel {

/// A thread's line to the program that shows its dialogs, which belongs to a hidden window of the
/// thread: what the person does is done by messages of that window, one an action. When the line
/// ends, what was shown over it is cancelled, one dialog after the other, the newest first.
class PresenterLine final : public Watch {
  public:
    /// The calling thread's, or null.
    static PresenterLine* existing();

    /// The same, made at the first need; null when no window can be had.
    static PresenterLine* current();

    PresenterLine(const PresenterLine&) = delete;
    PresenterLine& operator=(const PresenterLine&) = delete;
    ~PresenterLine() = default;

    /// Leads to `program` from now on; false when that cannot be.
    bool connect(const std::shared_ptr<PresenterProgram>& program);

    /// Shows a window; false when that cannot be.
    bool open(HWND window, const std::string& message);

    bool shows(HWND window) const;

    void send(const std::string& message);

    /// The window has gone, or goes.
    void close(HWND window);

    /// The number of the last action that the windows' state has taken in.
    std::int64_t seen() const { return seen_; }

  private:
    PresenterLine() = default;

    static LRESULT receive(void* context, HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    static void abandon(void* context);

    void serve(std::uint32_t events) override;
    bool read();
    bool take_lines();
    bool write();
    void lose();
    void post_next();
    void perform_next();
    void cancel_next();

    HWND window_ = nullptr;
    std::shared_ptr<PresenterProgram> program_;
    Descriptor socket_; ///< none while the line leads nowhere
    std::string incoming_;
    std::string outgoing_;
    std::deque<UserAction> actions_; ///< that have come and are not done yet
    bool posted_ = false;
    std::int64_t seen_ = 0;
    std::vector<HWND> shown_; ///< oldest first
    std::vector<HWND> lost_;  ///< were shown over a line that has ended
    HWND asked_ = nullptr;    ///< of these, the one that has been asked to close
    bool cancelling_ = false;
};

} // namespace tarnel
