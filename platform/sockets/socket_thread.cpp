#include "platform/sockets/socket_thread.h"

#include "platform/base/exceptions.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/registry/application.h"
#include "platform/sockets/live_socket.h"

#include <memory>
#include <utility>

namespace tarnel {
namespace {

constexpr UINT socket_message = 0x0373; ///< wParam: the socket's number, 0 for what was kept

} // namespace

thread_local constinit SocketThread* SocketThread::own_ = nullptr;

SocketThread* SocketThread::current() {
    if (own_) {
        return own_;
    }
    auto made = std::make_unique<SocketThread>();
    made->window_ = create_window(&SocketThread::handle_message, made.get(), nullptr,
                                  &SocketThread::thread_ended);
    return made->window_ ? own_ = made.release() : nullptr;
}

void SocketThread::thread_ended(void* self) {
    const std::unique_ptr<SocketThread> ended(static_cast<SocketThread*>(self));
    for (const auto& [number, socket] : ended->sockets_) {
        socket->thread_ended();
    }
    own_ = nullptr;
}

std::uint64_t SocketThread::enter(LiveSocket& socket) {
    sockets_.emplace(++last_number_, &socket);
    return last_number_;
}

bool SocketThread::post(std::uint64_t number, LONG event, int error) {
    return PostMessageA(window_, socket_message, number, MAKELPARAM(event, error));
}

/// An exception that leaves a socket's handler ends here.
LRESULT SocketThread::handle_message(void* self, HWND window, UINT message, WPARAM wparam,
                                     LPARAM lparam) {
    if (message != socket_message) {
        return 0;
    }
    try {
        static_cast<SocketThread*>(self)->receive({wparam, LOWORD(lparam), HIWORD(lparam)});
    } catch (CException* exception) {
        return answer_exception(exception, MSG{window, message, wparam, lparam, 0, {}});
    }
    return 0;
}

void SocketThread::receive(const Notification& notification) {
    if (waits_ == 0 && kept_.empty()) {
        deliver(notification);
        return;
    }
    if (notification.number != 0) {
        kept_.push_back(notification);
    }
    deliver_kept();
}

/// One a turn of the message loop, so that it does not matter how its handler ends.
void SocketThread::deliver_kept() {
    if (waits_ > 0 || kept_.empty()) {
        return;
    }
    const Notification first = kept_.front();
    kept_.pop_front();
    if (!kept_.empty()) {
        PostMessageA(window_, socket_message, 0, 0);
    }
    deliver(first);
}

void SocketThread::deliver(const Notification& notification) {
    const auto found = sockets_.find(notification.number);
    if (found != sockets_.end()) {
        found->second->deliver(notification.event, notification.error);
    }
}

void SocketThread::end_wait() {
    if (--waits_ == 0 && !kept_.empty()) {
        PostMessageA(window_, socket_message, 0, 0);
    }
}

} // namespace tarnel
