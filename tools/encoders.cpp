#include "desktop/EncoderDialog.h"
#include "platform/companions/wait_with_loop.h"
#include "tools/dialog_session.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// `tarnel encoders` shows the encoder dialog with a simulated arm, whose encoders find their
// reference marks one after the other.

namespace {

constexpr DWORD until_next_joint_ms = 300;
constexpr auto time_of_a_reference = std::chrono::milliseconds(400);

struct Arguments {
    int count = 6;
    std::string names;
    bool user_controlled = false;
    bool set_home = false;
    std::string picture;
};

class ArmDialog final : public CEncoderInitDlg {
  public:
    /// The joints move by themselves, one after the other.
    void move_joints() {
        for (int joint = 0; joint < GetEncoderCount() && !is_over(); ++joint) {
            if (SafeWaitWithMessageLoop(0, nullptr, until_next_joint_ms, 1, nullptr) == WAIT_QUIT) {
                return;
            }
            SetInitDone(joint, 1);
        }
    }

    bool is_over() const { return all_done_ || GetCancelled(); }

    bool all_done() const { return all_done_; }

  private:
    /// The arm needs a moment, on a thread of its own, until it has found the mark.
    void OnInitDone(LONG encoder) override {
        if (encoder < 0) {
            say("all encoders are at home");
            return;
        }
        set_referencing(1);
        arm_ = std::jthread([this](const std::stop_token& stop) {
            std::mutex lock;
            std::unique_lock guard(lock);
            std::condition_variable_any().wait_for(guard, stop, time_of_a_reference,
                                                   [] { return false; });
            set_referencing(0);
        });
        say(fmt::format("encoder {} moves", encoder + 1));
    }

    void OnAllDone() override { all_done_ = true; }

    static void say(const std::string& what) {
        fmt::print("{}\n", what);
        std::fflush(stdout);
    }

    bool all_done_ = false;
    std::jthread arm_;
};

void run(const Arguments& arguments) {
    const DialogSession session(arguments.picture);
    ArmDialog dialog;
    dialog.SetEncoderCount(arguments.count);
    dialog.SetEncoderNames(arguments.names.c_str());
    dialog.SetUserControlled(arguments.user_controlled);
    dialog.set_show_set_home(arguments.set_home);
    if (!dialog.Create(nullptr)) {
        session.end_without_answer(-1);
    }
    if (!arguments.user_controlled) {
        dialog.move_joints();
    }
    MSG message;
    while (!dialog.is_over() && GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    const bool done = dialog.all_done();
    dialog.DestroyWindow();
    if (!done) {
        session.end_without_answer(IDCANCEL);
    }
    fmt::print("all {} encoders are initialised\n", arguments.count);
}

} // namespace

void add_encoders_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand(
        "encoders", "Show the initialisation of a measuring arm's encoders, with a simulated arm");
    verb->add_option("COUNT", arguments->count, "Encoders")
        ->required()
        ->check(CLI::Range(1, CEncoderInitDlg::max_encoders));
    verb->add_option("--names", arguments->names, "Their names, separated by ';'");
    verb->add_flag("--user-controlled", arguments->user_controlled,
                   "Each encoder waits for its button, instead of the arm moving by itself");
    verb->add_flag("--set-home", arguments->set_home, "Show the button that sets all at once");
    DialogSession::add_picture_option(*verb, arguments->picture);
    verb->footer(fmt::format("Exit codes: 0 all are initialised, {}\n"
                             "Example: tarnel encoders 6 --names 'A;B;C;D;E;F' --user-controlled",
                             dialog_exit_codes));
    verb->callback([arguments] { run(*arguments); });
}
