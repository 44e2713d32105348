#pragma once

#include "platform/windows/presenter.h"
#include "platform/windows/user_actions.h"

#include <functional>
#include <memory>
#include <vector>

namespace support {

/// Stands in for the screen, and for the person in front of it, as long as it lives. Dialogs that
/// are opened and questions that are asked take the scripts in the order in which the test has laid
/// them down, whichever thread they come on. A script runs on the thread of its dialog, inside the
/// dialog's own message loop. What a script is left for when the object dies has not come: a
/// failure.
class ScriptedPresenter {
  public:
    using Step = std::function<void(const tarnel::DialogView& shown)>;
    using Answer = std::function<void(const tarnel::MessageBoxView& box)>;

    ScriptedPresenter();
    ~ScriptedPresenter();

    ScriptedPresenter(const ScriptedPresenter&) = delete;
    ScriptedPresenter& operator=(const ScriptedPresenter&) = delete;

    /// What the person does in the next dialog that is opened. Between two steps the messages that
    /// were posted meanwhile are run, and each step gets the dialog as it is shown then; steps that
    /// are left when the dialog closes are not run. A dialog without a script is only shown.
    template <typename... Steps>
    void next_dialog(Steps... steps) {
        add_script({Step(std::move(steps))...});
    }

    /// How the next message box is answered; without it, by IDOK.
    void next_answer(int button);
    void next_answer(Answer answer);

    /// The message boxes so far, oldest first.
    std::vector<tarnel::MessageBoxView> asked() const;

    /// The dialogs so far, oldest first, those that are closed too.
    std::vector<HWND> dialogs() const;

    /// The dialog as it is shown now, or was last; an empty one, and a failure, when it never was.
    tarnel::DialogView shown(HWND dialog) const;

    /// Dialogs and message boxes that are on the screen.
    bool is_open(HWND window) const;

    /// Not ready: there is no screen.
    void set_ready(bool ready);

  private:
    class Screen;

    void add_script(std::vector<Step> steps);

    const std::shared_ptr<Screen> screen_;
};

/// The first control of that identifier; an empty one, and a failure, when there is none.
const tarnel::ControlView& control(const tarnel::DialogView& dialog, UINT id);

/// Runs the calling thread's messages until the condition holds; false when it does not come.
bool dispatch_until(const std::function<bool()>& condition);

} // namespace support
