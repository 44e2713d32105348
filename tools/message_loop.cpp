#include "tools/message_loop.h"

#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"

#include <poll.h>

#include <utility>

MessageLoop::MessageLoop() {
    tarnel::set_host_wait({&MessageLoop::wait, this});
}

MessageLoop::~MessageLoop() {
    tarnel::set_host_wait({});
}

void MessageLoop::wait(void* context, int descriptor, int milliseconds) {
    auto& loop = *static_cast<MessageLoop*>(context);
    pollfd watched[] = {{descriptor, POLLIN, 0}, {loop.stop_.descriptor(), POLLIN, 0}};
    ::poll(watched, loop.stopped_ ? 1 : 2, milliseconds);
    if (watched[1].revents != 0 && !std::exchange(loop.stopped_, true)) {
        PostQuitMessage(0);
        if (loop.on_stop) {
            loop.on_stop();
        }
    }
}
