#include "platform/sockets/blocking_call.h"

#include "platform/base/last_error.h"
#include "platform/messages/queue.h"

#include <utility>

namespace tarnel {

BlockingCall::BlockingCall(std::shared_ptr<LiveSocket> socket, LONG event)
    : socket_(std::move(socket)), thread_(SocketThread::current()) {
    socket_->begin_wait(event);
    if (thread_) {
        thread_->begin_wait();
    }
}

BlockingCall::~BlockingCall() {
    socket_->end_wait();
    if (thread_) {
        thread_->end_wait();
    }
}

bool BlockingCall::wait(const std::function<bool()>& done, const std::function<void()>& idle,
                        const Deadline& deadline) {
    MessageQueue* const queue = MessageQueue::current();
    if (!queue) {
        SetLastError(WSAENOBUFS);
        return false;
    }
    Sleeper sleeper(*queue->bell(), Sleeper::Kind::serving_messages);
    for (;; sleeper.sleep(deadline)) {
        queue->run_sent();
        if (idle && !socket_->is_cancelled() && queue->posted_count() > 0) {
            idle();
        }
        if (socket_->is_cancelled() || deadline.passed()) {
            SetLastError(socket_->is_cancelled() ? WSAEINTR : WSAETIMEDOUT);
            return false;
        }
        if (done()) {
            return true;
        }
    }
}

} // namespace tarnel
