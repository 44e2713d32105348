#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace tarnel {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// What the server has sent; null for nothing, or an error.
template <typename Reply>
using X11Reply = std::unique_ptr<Reply, FreeReply>;

/// A connection to the X server. It has one owner, and is used by one thread at a time. A server
/// that does not answer is waited for a few seconds and then taken as saying no; one that is gone
/// breaks the connection, and nothing else.
class X11Connection {
  public:
    /// Null, with ERROR_NOT_SUPPORTED, when there is no X server.
    static std::unique_ptr<X11Connection> open();

    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;
    ~X11Connection();

    xcb_connection_t* get() const { return connection_; }

    int descriptor() const { return ::xcb_get_file_descriptor(connection_); }

    xcb_window_t root() const { return setup_screen().root; }

    bool is_broken() const;

    /// False in a child of the process that has opened the connection, which must leave it alone.
    bool is_own() const;

    /// Whether requests may be made now: the connection is there, and what is sent is taken.
    bool is_ready() const;

    /// Whether requests may be made at once, and nothing has come.
    bool is_idle();

    /// The answer to a request.
    template <typename Reply, typename Cookie>
    X11Reply<Reply> reply(Cookie cookie) {
        return X11Reply<Reply>(static_cast<Reply*>(await(cookie.sequence)));
    }

    /// Sends what was requested, without waiting for its effect.
    void flush();

    /// Sends `count` requests that are laid out in `bytes`; none that were made before may be
    /// unsent. False when the server is gone, or does not take them.
    bool send(std::string_view bytes, unsigned count);

    /// Waits until everything that was requested has its effect; false when that does not come.
    bool sync();

    /// What has come without having been asked for, in turn.
    X11Reply<xcb_generic_event_t> next_event();

  private:
    explicit X11Connection(xcb_connection_t* connection);

    const xcb_screen_t& setup_screen() const {
        return *::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data;
    }

    void* await(unsigned sequence);

    xcb_connection_t* const connection_;
    const pid_t process_;
    unsigned unanswered_ = 0;            ///< requests sent by send()
    X11Reply<xcb_generic_event_t> next_; ///< taken from the connection already
};

/// Opens `connection` unless it can be used as it is. False, with ERROR_NOT_SUPPORTED, when there
/// is no X server.
bool renew(std::unique_ptr<X11Connection>& connection);

} // namespace tarnel
