#include "platform/base/diagnostics.h"
#include "platform/windows/presenter_line.h"
#include "platform/windows/presenter_process.h"

#include <unistd.h>

#include <utility>

namespace tarnel {

ProcessPresenter::ProcessPresenter() : process_(::getpid()) {}

/// One that does not answer is of no use, and its lines end with it.
std::shared_ptr<PresenterProgram> ProcessPresenter::awake_program() {
    std::string fault;
    const std::lock_guard guard(program_lock_);
    if (program_ && !program_->is_awake()) {
        program_->kill();
        program_ = nullptr;
    }
    if (!program_) {
        program_ = PresenterProgram::start(fault);
    }
    if (!fault.empty() && fault != fault_) {
        report("dialogs cannot be shown: " + fault);
    }
    fault_ = fault;
    return program_;
}

bool ProcessPresenter::ready() {
    if (::getpid() != process_) {
        return false;
    }
    const auto program = awake_program();
    PresenterLine* const line = program ? PresenterLine::current() : nullptr;
    return line && line->connect(program);
}

bool ProcessPresenter::open(const DialogView& dialog) {
    PresenterLine* const line = PresenterLine::existing();
    return line && line->open(dialog.window, dialog_message("open", dialog, line->seen()));
}

void ProcessPresenter::update(const DialogView& changed) {
    PresenterLine* const line = PresenterLine::existing();
    if (line && line->shows(changed.window) && ::getpid() == process_) {
        line->send(dialog_message("update", changed, line->seen()));
    }
}

bool ProcessPresenter::ask(const MessageBoxView& box) {
    PresenterLine* const line = PresenterLine::existing();
    return line && line->open(box.window, question_message(box));
}

void ProcessPresenter::close(HWND window) {
    PresenterLine* const line = PresenterLine::existing();
    if (line && ::getpid() == process_) {
        line->close(window);
    }
}

} // namespace tarnel
