#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/windows/dialog.h"
#include "platform/windows/dialog_window.h"
#include "platform/windows/presenter_line.h"
#include "platform/windows/user_actions.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace tarnel {
namespace {

constexpr UINT WM_PERFORM_NEXT = WM_USER;
constexpr UINT WM_CANCEL_NEXT = WM_USER + 1;

/// Beyond this a line is not what it should be: one that sends no line ends, or does not read.
constexpr std::size_t max_waiting_bytes = 1 << 20;

thread_local constinit PresenterLine* line_of_thread = nullptr;

bool contains(const std::vector<HWND>& windows, HWND window) {
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

/// A window that nobody sees any more and that has refused to close.
void end_unseen(HWND handle) {
    Window* const window = Window::of(handle);
    auto* const dialog = dynamic_cast<DialogWindow*>(window);
    if (!dialog) {
        DestroyWindow(handle);
        return;
    }
    const Window::InUse in_use(*dialog);
    dialog->forget_presenter();
    if (auto* const object = dynamic_cast<CDialog*>(dialog->attached())) {
        object->EndDialog(IDCANCEL); // hides what does not run modally
    }
}

} // namespace

PresenterLine* PresenterLine::existing() {
    return line_of_thread;
}

PresenterLine* PresenterLine::current() {
    if (!line_of_thread) {
        std::unique_ptr<PresenterLine> line(new PresenterLine);
        line->window_ =
            create_window(&PresenterLine::receive, line.get(), nullptr, &PresenterLine::abandon);
        line_of_thread = line->window_ ? line.release() : nullptr;
    }
    return line_of_thread;
}

void PresenterLine::abandon(void* context) {
    delete static_cast<PresenterLine*>(context);
    line_of_thread = nullptr;
}

bool PresenterLine::connect(const std::shared_ptr<PresenterProgram>& program) {
    if (socket_ && program == program_) {
        return true;
    }
    lose();
    Descriptor socket = program->new_line();
    if (!socket || !start(socket.get(), EPOLLIN | EPOLLOUT)) {
        return false;
    }
    socket_ = std::move(socket);
    program_ = program;
    seen_ = 0;
    return true;
}

bool PresenterLine::open(HWND window, const std::string& message) {
    if (!socket_) {
        return false;
    }
    shown_.push_back(window);
    send(message);
    return shows(window);
}

bool PresenterLine::shows(HWND window) const {
    return contains(shown_, window);
}

void PresenterLine::send(const std::string& message) {
    outgoing_ += message;
    outgoing_ += '\n';
    if (!write() || outgoing_.size() > max_waiting_bytes) {
        program_->kill();
        lose();
    }
}

void PresenterLine::close(HWND window) {
    if (std::erase(shown_, window) != 0) {
        send(closing_message(window));
    }
    std::erase(lost_, window);
}

void PresenterLine::serve(std::uint32_t) {
    if (!read() || !write()) {
        lose();
    }
    post_next();
}

/// All that there is; false at the end, and where it is not what it should be.
bool PresenterLine::read() {
    std::array<char, 4096> block;
    for (;;) {
        const auto count = retry_on_signal(
            [&] { return ::recv(socket_.get(), block.data(), block.size(), MSG_DONTWAIT); });
        if (count <= 0) {
            return count < 0 && errno == EAGAIN;
        }
        incoming_.append(block.data(), static_cast<std::size_t>(count));
        if (!take_lines() || incoming_.size() > max_waiting_bytes) {
            return false;
        }
    }
}

/// False when there is a damaged one.
bool PresenterLine::take_lines() {
    std::size_t begin = 0;
    for (std::size_t end; (end = incoming_.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        auto action = read_action(std::string_view(incoming_).substr(begin, end - begin));
        if (!action) {
            return false;
        }
        actions_.push_back(std::move(*action));
    }
    incoming_.erase(0, begin);
    return true;
}

/// As much as goes; the rest follows when there is room. False at the end.
bool PresenterLine::write() {
    while (!outgoing_.empty()) {
        const auto count = retry_on_signal([this] {
            return ::send(socket_.get(), outgoing_.data(), outgoing_.size(),
                          MSG_DONTWAIT | MSG_NOSIGNAL);
        });
        if (count < 0) {
            return errno == EAGAIN;
        }
        outgoing_.erase(0, static_cast<std::size_t>(count));
    }
    return true;
}

/// Nothing is shown any more.
void PresenterLine::lose() {
    stop();
    socket_ = Descriptor();
    incoming_.clear();
    outgoing_.clear();
    actions_.clear();
    lost_.insert(lost_.end(), shown_.begin(), shown_.end());
    shown_.clear();
    post_next();
}

void PresenterLine::post_next() {
    if (!lost_.empty() && !cancelling_) {
        cancelling_ = PostMessageA(window_, WM_CANCEL_NEXT, 0, 0) != FALSE;
    }
    if (!actions_.empty() && !posted_) {
        posted_ = PostMessageA(window_, WM_PERFORM_NEXT, 0, 0) != FALSE;
    }
}

LRESULT PresenterLine::receive(void* context, HWND, UINT message, WPARAM, LPARAM) {
    auto& line = *static_cast<PresenterLine*>(context);
    if (message == WM_PERFORM_NEXT) {
        line.perform_next();
    } else if (message == WM_CANCEL_NEXT) {
        line.cancel_next();
    }
    return 0;
}

/// The one after it may come while this one runs loops of its own. Whatever has become of the
/// action, the window is shown again as its state says.
void PresenterLine::perform_next() {
    posted_ = false;
    if (actions_.empty()) {
        return;
    }
    const UserAction action = std::move(actions_.front());
    actions_.pop_front();
    post_next();
    seen_ = action.number;
    perform(action);
    if (Window* const window = Window::of(action.window)) {
        window->changed();
    }
}

/// A dialog that runs modally has left its loop when the next message comes, if it has agreed.
void PresenterLine::cancel_next() {
    struct Next {
        ~Next() {
            line.cancelling_ = false;
            line.post_next();
        }

        PresenterLine& line;
    } const next{*this};

    if (lost_.empty()) {
        return;
    }
    const HWND newest = lost_.back();
    if (newest != std::exchange(asked_, newest)) {
        user_closes(newest);
    } else {
        std::erase(lost_, newest);
        end_unseen(newest);
    }
}

} // namespace tarnel
