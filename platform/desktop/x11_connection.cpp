#include "platform/desktop/x11_connection.h"

#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/threads/deadline.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/xcbext.h>

#include <csignal>
#include <ctime>

namespace tarnel {
namespace {

constexpr DWORD patience_ms = 5'000;

/// Answers carry 16 bits of the number of their request.
constexpr unsigned max_unanswered = 30'000;

/// Which of `events` the descriptor has come to, or hang-up, before the deadline.
int wait_for(int descriptor, short events, const Deadline& deadline) {
    pollfd entry{descriptor, events, 0};
    retry_on_signal([&] {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.remaining());
        return ::poll(&entry, 1, static_cast<int>(left.count()));
    });
    return entry.revents;
}

/// Writing to a server that is gone would end the process; a signal that the thread gets meanwhile
/// for that reason is taken back.
class WithoutPipeSignal {
  public:
    WithoutPipeSignal() {
        ::sigemptyset(&pipe_);
        ::sigaddset(&pipe_, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }

    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

    ~WithoutPipeSignal() {
        const timespec at_once{};
        if (came && !::sigismember(&before_, SIGPIPE)) {
            ::sigtimedwait(&pipe_, nullptr, &at_once);
        }
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

    bool came = true; ///< perhaps

  private:
    sigset_t pipe_;
    sigset_t before_;
};

} // namespace

std::unique_ptr<X11Connection> X11Connection::open() {
    const WithoutPipeSignal guard;
    std::unique_ptr<X11Connection> opened(new X11Connection(::xcb_connect(nullptr, nullptr)));
    const bool has_screen =
        !opened->is_broken() && ::xcb_setup_roots_length(::xcb_get_setup(opened->connection_)) > 0;
    if (!has_screen) {
        SetLastError(ERROR_NOT_SUPPORTED);
        opened.reset();
    }
    return opened;
}

X11Connection::X11Connection(xcb_connection_t* connection)
    : connection_(connection), process_(::getpid()) {}

X11Connection::~X11Connection() {
    if (!is_own()) {
        // Taking leave would end the parent's connection.
        const Descriptor nowhere(::open("/dev/null", O_RDWR | O_CLOEXEC));
        ::dup2(nowhere.get(), descriptor());
    }
    ::xcb_disconnect(connection_);
}

bool X11Connection::is_own() const {
    return process_ == ::getpid();
}

bool X11Connection::is_broken() const {
    return ::xcb_connection_has_error(connection_) || wait_for(descriptor(), 0, Deadline::after(0));
}

bool X11Connection::is_ready() const {
    return is_own() && !::xcb_connection_has_error(connection_) &&
           wait_for(descriptor(), POLLOUT, Deadline::after(patience_ms)) == POLLOUT;
}

bool X11Connection::is_idle() {
    if (!next_) {
        next_.reset(::xcb_poll_for_queued_event(connection_));
    }
    return !next_ && is_own() && !::xcb_connection_has_error(connection_) &&
           wait_for(descriptor(), POLLIN | POLLOUT, Deadline::after(0)) == POLLOUT;
}

void X11Connection::flush() {
    WithoutPipeSignal guard;
    guard.came = ::xcb_flush(connection_) <= 0;
}

/// The library lets others write in its place. Done here, it needs no signal to be held back.
bool X11Connection::send(std::string_view bytes, unsigned count) {
    std::uint64_t written = 0;
    if (!::xcb_take_socket(
            connection_, [](void*) {}, nullptr, 0, &written)) {
        return false;
    }
    const Deadline deadline = Deadline::after(patience_ms);
    while (!bytes.empty()) {
        const auto sent = retry_on_signal([&] {
            return ::send(descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        });
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (wait_for(descriptor(), POLLOUT, deadline) != POLLOUT) {
            ::shutdown(descriptor(), SHUT_RDWR); // nothing can follow half a request
            return false;
        }
    }
    ::xcb_writev(connection_, nullptr, 0, count);
    unanswered_ += count;
    if (unanswered_ >= max_unanswered && sync()) {
        unanswered_ = 0;
    }
    return true;
}

void* X11Connection::await(unsigned sequence) {
    flush();
    const Deadline deadline = Deadline::after(patience_ms);
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    while (!::xcb_poll_for_reply(connection_, sequence, &reply, &error)) {
        if (is_broken() || !wait_for(descriptor(), POLLIN, deadline)) {
            ::xcb_discard_reply(connection_, sequence);
            return nullptr;
        }
    }
    std::free(error);
    return reply;
}

bool X11Connection::sync() {
    return reply<xcb_get_input_focus_reply_t>(::xcb_get_input_focus(connection_)) != nullptr;
}

X11Reply<xcb_generic_event_t> X11Connection::next_event() {
    if (next_) {
        return std::move(next_);
    }
    for (;;) {
        X11Reply<xcb_generic_event_t> event(::xcb_poll_for_queued_event(connection_));
        if (event || !(wait_for(descriptor(), POLLIN, Deadline::after(0)) & POLLIN)) {
            return event;
        }
        // A part of something may be all that is read, and more be there.
        event.reset(::xcb_poll_for_event(connection_));
        if (event || is_broken()) {
            return event;
        }
    }
}

bool renew(std::unique_ptr<X11Connection>& connection) {
    if (connection && connection->is_ready()) {
        return true;
    }
    if (!connection || !connection->is_own() || connection->is_broken()) {
        connection = X11Connection::open();
    }
    if (connection && connection->is_ready()) {
        return true;
    }
    SetLastError(ERROR_NOT_SUPPORTED);
    return false;
}

} // namespace tarnel
