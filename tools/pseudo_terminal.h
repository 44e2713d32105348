#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A machine's end of a serial line, whose other end is a port that any program can open.
///
/// Waits end early, with false, when the descriptor `stop` becomes readable.
class PseudoTerminal {
  public:
    /// With a `link`, a symbolic link of that name leads to the port, as long as this object lives;
    /// what stands there must be nothing or such a link. Throws std::system_error.
    PseudoTerminal(std::string link, int stop);
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    ~PseudoTerminal() { unplug(); }

    /// What to connect to.
    const std::string& port() const { return link_.empty() ? device_ : link_; }

    /// Waits until a program opens the port; once for each time that it was plugged in.
    bool wait_for_listener() const;

    /// Sends everything, waiting while the line is full.
    bool send(std::string_view bytes);

    /// When the last byte was handed to the line, in nanoseconds of the steady clock.
    std::int64_t sent_ns() const { return sent_ns_; }

    /// Waits until the listener has read everything; a cable that is pulled drops the rest.
    bool drain() const;

    /// Pulls the cable and plugs it in again: another device under the same link.
    void replug();

  private:
    void plug();
    void unplug();
    void open();
    void make_link() const;
    bool has_unread() const;

    const std::string link_;
    const int stop_;
    std::string device_;
    int master_ = -1;
    int port_ = -1;  ///< our own hold on the port: tells what is unread
    int watch_ = -1; ///< readable when somebody opens the port
    std::int64_t sent_ns_ = 0;
};
