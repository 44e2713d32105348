#include "platform/base/descriptor.h"
#include "platform/windows/dialog_picture.h"
#include "platform/windows/presenter_messages.h"
#include "platform/windows/presenter_spawn.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>

namespace tarnel {
namespace {

constexpr timeval patience{30, 0}; // for each step

/// What the program writes on `line` until it closes it, or takes too long.
std::string read_to_end(int line) {
    std::string text;
    std::array<char, 4096> block;
    for (;;) {
        const auto count =
            retry_on_signal([&] { return ::recv(line, block.data(), block.size(), 0); });
        if (count <= 0) {
            return text;
        }
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

/// Writes all of it: the program reads to the end before it does anything.
bool write_all(int line, std::string_view text) {
    while (!text.empty()) {
        const auto count =
            retry_on_signal([&] { return ::send(line, text.data(), text.size(), MSG_NOSIGNAL); });
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return ::shutdown(line, SHUT_WR) == 0;
}

/// What the program says of a dialog; nothing when it fails.
std::optional<std::string> run_presenter(const std::vector<std::string>& arguments,
                                         const DialogView& dialog) {
    int ends[2];
    const std::string path = presenter_path();
    if (path.empty() || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return std::nullopt;
    }
    const Descriptor ours(ends[0]);
    ::setsockopt(ours.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(ours.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    Descriptor its(ends[1]);
    const pid_t child = spawn_presenter(path, arguments, its.get(), its.get(), STDERR_FILENO);
    if (child < 0) {
        return std::nullopt;
    }
    its = Descriptor();
    const bool asked = write_all(ours.get(), dialog_message("open", dialog, 0) + '\n');
    std::string answer = read_to_end(ours.get());
    ::kill(child, SIGKILL); // what has not ended by now
    int status = 0;
    const bool ended =
        retry_on_signal([&] { return ::waitpid(child, &status, 0); }) == child && status == 0;
    return asked && ended ? std::optional(std::move(answer)) : std::nullopt;
}

} // namespace

bool draw_dialog(const DialogView& dialog, const std::string& path) {
    return run_presenter({"--picture", path}, dialog).has_value();
}

std::optional<std::vector<HWND>> clipped_controls(const DialogView& dialog) {
    const auto answer = run_presenter({"--measure"}, dialog);
    if (!answer) {
        return std::nullopt;
    }
    std::vector<HWND> windows;
    const char* const end = answer->data() + answer->size();
    std::intptr_t number = 0;
    for (const char* next = answer->data(); next < end; ++next) {
        next = std::from_chars(next, end, number).ptr;
        windows.push_back(reinterpret_cast<HWND>(number));
    }
    return windows;
}

} // namespace tarnel
