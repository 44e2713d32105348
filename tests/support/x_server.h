#pragma once

#include "tests/support/environment.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace support {

/// A screen of the test's own, as long as it lives: the environment names it. What cannot be
/// started is a failure. Without a window manager the window under the pointer, in the middle of
/// the screen, takes the keys.
class XServer {
  public:
    explicit XServer(bool managed = true);
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    /// The server ends now; those on it lose their windows.
    void end();

  private:
    void start_server();
    void start_window_manager();

    Environment environment_;
    std::string folder_; ///< what XDG_RUNTIME_DIR names
    pid_t server_ = -1;
    pid_t manager_ = -1;
};

/// Starts a program that dies with the calling thread; `kept`, unless -1, stays open in it.
pid_t start_program(const std::vector<std::string>& command, int kept = -1);

/// What a shell command prints, without the last line end.
std::string output_of(const std::string& command);

/// Has xdotool act as a person, or look; what it prints.
inline std::string xdotool(const std::string& arguments) {
    return output_of("xdotool " + arguments + " 2>/dev/null");
}

/// Waits until the window that takes the keys has that title; its X number, or "" when it does not
/// come.
std::string window_titled(const std::string& title);

} // namespace support
