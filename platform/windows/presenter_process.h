#pragma once

#include "platform/windows/presenter.h"
#include "platform/windows/presenter_program.h"

#include <mutex>

namespace tarnel {

/// Shows dialogs by a program of its own, which is started at the first need, serves all threads,
/// and is started anew when it is gone. Why there is none is reported once. In a child of the
/// process that made it, it shows nothing.
class ProcessPresenter final : public Presenter {
  public:
    ProcessPresenter();

    bool ready() override;
    bool open(const DialogView& dialog) override;
    void update(const DialogView& changed) override;
    bool ask(const MessageBoxView& box) override;
    void close(HWND window) override;

  private:
    std::shared_ptr<PresenterProgram> awake_program();

    const pid_t process_;
    std::mutex program_lock_;
    std::shared_ptr<PresenterProgram> program_;
    std::string fault_; ///< that has been reported
};

} // namespace tarnel
