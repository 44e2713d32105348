#include "platform/base/last_error.h"
#include "platform/desktop/foreign_windows.h"
#include "platform/desktop/key_input.h"
#include "tools/doctor.h"

#include <fmt/format.h>

#include <cstdlib>

namespace {

constexpr std::chrono::seconds server_patience(4);

constexpr const char* x_services[] = {"hot keys", "typing", "window search"};

std::string environment(const char* name) {
    const char* const text = std::getenv(name);
    return text ? text : "";
}

bool is_wayland() {
    return !environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland";
}

/// Without an X server.
void cannot_serve(const std::string& why, Diagnosis& diagnosis) {
    for (const char* service : x_services) {
        diagnosis.fails(service, why);
    }
}

void without_display(Diagnosis& diagnosis) {
    if (is_wayland()) {
        diagnosis.add(Level::problem, "This is a Wayland desktop without X (DISPLAY is not set).",
                      "sudo apt-get install xwayland, then log out and in again");
    } else {
        diagnosis.add(Level::warning, "There is no display (DISPLAY is not set).",
                      "Log in at a desktop, or over the network with ssh -X");
    }
    cannot_serve("there is no display", diagnosis);
}

/// What an X server can do for the library.
struct Server {
    bool shows_windows;
    bool types;
};

Server look_at_server() {
    const bool shows = EnumWindows([](HWND, LPARAM) -> BOOL { return TRUE; }, 0) != FALSE;
    SetLastError(ERROR_SUCCESS);
    SendInput(0, nullptr, sizeof(INPUT)); // no key, but all that typing one needs
    return {shows, GetLastError() == ERROR_SUCCESS};
}

void with_server(const Server& server, const std::string& display, Diagnosis& diagnosis) {
    diagnosis.add(Level::ok, fmt::format("The X server of {} answers.", display));
    const char* const limits = is_wayland() ? "in programs of X alone" : "";
    if (is_wayland()) {
        diagnosis.add(
            Level::warning,
            "This is a Wayland desktop: hot keys, typing and window search reach programs "
            "that use X alone.",
            "Choose a session on Xorg when you log in");
    }
    diagnosis.works("hot keys", limits);
    if (server.types) {
        diagnosis.works("typing", limits);
    } else {
        diagnosis.add(Level::problem, "The X server lacks the extension XTEST, which typing needs.",
                      "Start the X server with: +extension XTEST");
        diagnosis.fails("typing", "the X server lacks the extension XTEST");
    }
    diagnosis.works("window search", limits);
}

/// Whether there is a server that answers.
bool examine_server(Diagnosis& diagnosis) {
    const std::string display = environment("DISPLAY");
    if (display.empty()) {
        without_display(diagnosis);
        return false;
    }
    const auto server = within(server_patience, &look_at_server);
    if (server && server->shows_windows) {
        with_server(*server, display, diagnosis);
        return true;
    }
    diagnosis.add(Level::problem,
                  fmt::format("The X server of {} {}.", display,
                              server ? "cannot be reached, or refuses you" : "does not answer"),
                  server
                      ? "Set DISPLAY to that of your desktop; to use another user's, let them run "
                        "xhost +si:localuser:" +
                            user_name()
                      : "Log out and in again, or start the X server anew");
    cannot_serve(diagnosis.findings.back().what, diagnosis);
    return false;
}

} // namespace

Diagnosis examine_desktop() {
    Diagnosis diagnosis;
    examine_dialogs(examine_server(diagnosis), diagnosis);
    return diagnosis;
}
