#include "platform/messages/host_loop.h"

#include "platform/messages/queue.h"

namespace tarnel {

int message_descriptor() {
    MessageQueue* queue = MessageQueue::current();
    if (!queue) {
        return -1;
    }
    Doorbell& bell = *queue->bell();
    if (!bell.is_hosted()) {
        bell.host();
        bell.ring(); // for what came before
    }
    return bell.descriptor();
}

bool run_pending_messages(int* exit_code) {
    MessageQueue* queue = MessageQueue::current();
    if (!queue || queue->bell()->in_host_wait) {
        return true;
    }
    queue->bell()->wake(true);
    queue->bell()->serve_watches();
    queue->run_sent();
    bool quit = false;
    MSG message;
    for (std::size_t left = queue->posted_count() + 1; left > 0 && !quit; --left) {
        if (!queue->look({}, true, message)) {
            break;
        }
        quit = message.message == WM_QUIT;
        if (quit && exit_code) {
            *exit_code = static_cast<int>(message.wParam);
        }
        DispatchMessageA(&message);
    }
    queue->bell()->rest();
    if (!queue->is_idle()) {
        queue->bell()->ring();
    }
    return !quit;
}

void set_host_wait(HostWait host) {
    if (MessageQueue* queue = MessageQueue::current()) {
        queue->bell()->host_wait = host;
    }
}

} // namespace tarnel
