#include "tests/support/scripted_presenter.h"

#include "platform/base/window_styles.h"
#include "platform/companions/wait_with_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/threads/deadline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <utility>

using tarnel::ControlView;
using tarnel::DialogView;
using tarnel::MessageBoxView;

namespace support {
namespace {

/// Does `work` when the calling thread next runs its messages, if `window` still exists then.
void do_soon(HWND window, std::function<void()> work) {
    struct Errand {
        HWND window;
        std::function<void()> work;
    };

    const auto receive = [](void* context, HWND own, UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message == WM_USER) {
            // Gone before the work begins, which may run loops of its own.
            const std::unique_ptr<Errand> errand(static_cast<Errand*>(context));
            DestroyWindow(own);
            if (IsWindow(errand->window)) {
                errand->work();
            }
        }
        return 0;
    };
    const HWND own = tarnel::create_window(receive, new Errand{window, std::move(work)}, nullptr,
                                           [](void* left) { delete static_cast<Errand*>(left); });
    ASSERT_TRUE(PostMessageA(own, WM_USER, 0, 0));
}

template <typename Script>
std::optional<Script> take_first(std::deque<Script>& scripts) {
    if (scripts.empty()) {
        return std::nullopt;
    }
    Script first = std::move(scripts.front());
    scripts.pop_front();
    return first;
}

void merge(DialogView& shown, const DialogView& changed) {
    std::vector<ControlView> controls = std::move(shown.controls);
    for (const ControlView& part : changed.controls) {
        std::erase_if(controls, [&](const ControlView& old) { return old.window == part.window; });
        controls.push_back(part);
    }
    shown = changed;
    shown.controls = std::move(controls);
}

} // namespace

class ScriptedPresenter::Screen final : public tarnel::Presenter,
                                        public std::enable_shared_from_this<Screen> {
  public:
    bool ready() override {
        const std::lock_guard guard(lock);
        return is_ready;
    }

    bool open(const DialogView& dialog) override {
        std::optional<std::vector<Step>> script;
        {
            const std::lock_guard guard(lock);
            if (!is_ready) {
                return false;
            }
            shown[dialog.window] = dialog;
            dialogs.push_back(dialog.window);
            on_screen.insert(dialog.window);
            script = take_first(scripts);
        }
        if (script) {
            run(dialog.window, std::move(*script), 0);
        }
        return true;
    }

    void update(const DialogView& changed) override {
        const std::lock_guard guard(lock);
        EXPECT_TRUE(on_screen.count(changed.window)) << "changed what is not open";
        merge(shown[changed.window], changed);
    }

    bool ask(const MessageBoxView& box) override {
        std::optional<Answer> answer;
        {
            const std::lock_guard guard(lock);
            if (!is_ready) {
                return false;
            }
            asked.push_back(box);
            on_screen.insert(box.window);
            answer = take_first(answers);
        }
        do_soon(box.window, [box, answer] {
            answer ? (*answer)(box) : tarnel::user_answers(box.window, IDOK);
        });
        return true;
    }

    void close(HWND window) override {
        const std::lock_guard guard(lock);
        EXPECT_EQ(on_screen.erase(window), 1U) << "closed what was not open";
    }

    DialogView view_of(HWND dialog) {
        const std::lock_guard guard(lock);
        const auto found = shown.find(dialog);
        EXPECT_NE(found, shown.end()) << "this dialog was never shown";
        return found != shown.end() ? found->second : DialogView();
    }

    std::mutex lock;
    bool is_ready = true;
    std::deque<std::vector<Step>> scripts;
    std::deque<Answer> answers;
    std::map<HWND, DialogView> shown;
    std::vector<HWND> dialogs;
    std::vector<MessageBoxView> asked;
    std::set<HWND> on_screen;

  private:
    /// A step is on its way only after the one before, so that it comes behind what that has
    /// posted.
    void run(HWND dialog, std::vector<Step> steps, std::size_t next) {
        if (next == steps.size()) {
            return;
        }
        do_soon(dialog, [self = shared_from_this(), dialog, steps = std::move(steps), next] {
            steps[next](self->view_of(dialog));
            self->run(dialog, steps, next + 1);
        });
    }
};

ScriptedPresenter::ScriptedPresenter() : screen_(std::make_shared<Screen>()) {
    tarnel::set_presenter(screen_);
}

ScriptedPresenter::~ScriptedPresenter() {
    tarnel::set_presenter(nullptr);
    const std::lock_guard guard(screen_->lock);
    EXPECT_TRUE(screen_->scripts.empty()) << "a dialog that was waited for has not come";
    EXPECT_TRUE(screen_->answers.empty()) << "a message box that was waited for has not come";
}

void ScriptedPresenter::add_script(std::vector<Step> steps) {
    const std::lock_guard guard(screen_->lock);
    screen_->scripts.push_back(std::move(steps));
}

void ScriptedPresenter::next_answer(int button) {
    next_answer([button](const MessageBoxView& box) { tarnel::user_answers(box.window, button); });
}

void ScriptedPresenter::next_answer(Answer answer) {
    const std::lock_guard guard(screen_->lock);
    screen_->answers.push_back(std::move(answer));
}

std::vector<MessageBoxView> ScriptedPresenter::asked() const {
    const std::lock_guard guard(screen_->lock);
    return screen_->asked;
}

std::vector<HWND> ScriptedPresenter::dialogs() const {
    const std::lock_guard guard(screen_->lock);
    return screen_->dialogs;
}

DialogView ScriptedPresenter::shown(HWND dialog) const {
    return screen_->view_of(dialog);
}

bool ScriptedPresenter::is_open(HWND window) const {
    const std::lock_guard guard(screen_->lock);
    return screen_->on_screen.count(window) != 0;
}

void ScriptedPresenter::set_ready(bool ready) {
    const std::lock_guard guard(screen_->lock);
    screen_->is_ready = ready;
}

const ControlView& control(const DialogView& dialog, UINT id) {
    const auto found =
        std::find_if(dialog.controls.begin(), dialog.controls.end(),
                     [id](const ControlView& candidate) { return candidate.id == id; });
    if (found != dialog.controls.end()) {
        return *found;
    }
    ADD_FAILURE() << "the dialog \"" << dialog.caption << "\" has no control " << id;
    static const ControlView none;
    return none;
}

bool dispatch_until(const std::function<bool()>& condition) {
    const auto deadline = tarnel::Deadline::after(60'000);
    while (!condition()) {
        if (deadline.passed() || SafeWaitWithMessageLoop(0, nullptr, 10, 1, nullptr) == WAIT_QUIT) {
            return false;
        }
    }
    return true;
}

} // namespace support
