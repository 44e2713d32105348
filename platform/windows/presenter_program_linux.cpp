#include "platform/windows/presenter_program.h"
#include "platform/windows/presenter_spawn.h"
#include "platform/windows/presenter_wire.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

extern "C" { // which the header of glibc 2.36 leaves out
#include <sys/pidfd.h>
}

namespace tarnel {
namespace {

constexpr DWORD patience = 5'000; ///< ms; a machine under load needs a second to start the program

void take_leave_of(pid_t child) {
    retry_on_signal([child] { return ::waitpid(child, nullptr, 0); });
}

} // namespace

std::shared_ptr<PresenterProgram> PresenterProgram::start(std::string& fault, int words) {
    const char* const display = std::getenv("DISPLAY");
    const std::string path = presenter_path();
    int ends[2];
    if (!display || !*display) {
        fault = wire::no_display;
    } else if (path.empty()) {
        fault = "the program tarnel-presenter is missing";
    } else if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        fault = std::strerror(errno);
    } else {
        Descriptor its_end(ends[1]);
        std::shared_ptr<PresenterProgram> program(new PresenterProgram(Descriptor(ends[0])));
        return program->launch(path, std::move(its_end), words, fault) ? program : nullptr;
    }
    return nullptr;
}

/// The child answers through a child of its own, which serves on, and ends. Its session is theirs:
/// one that does not answer is ended with what it may have started.
bool PresenterProgram::launch(const std::string& path, Descriptor its_end, int words,
                              std::string& fault) {
    const pid_t child = spawn_presenter(path, {"--serve"}, its_end.get(), words, words);
    its_end = Descriptor(); // so that its death is seen
    if (child < 0) {
        fault = path + " cannot be started";
        return false;
    }
    const std::string answer = receive(Deadline::after(patience));
    pid_t server = 0;
    if (answer.starts_with(wire::ready)) {
        const std::string_view number = std::string_view(answer).substr(std::strlen(wire::ready));
        std::from_chars(number.data(), number.data() + number.size(), server);
        process_ = Descriptor(::pidfd_open(server, 0));
    }
    if (!process_) {
        ::kill(-child, SIGKILL);
        fault = answer.empty() || server != 0 ? path + " does not answer" : answer;
    }
    take_leave_of(child);
    return static_cast<bool>(process_);
}

/// The next line, without its end; "" when it does not come.
std::string PresenterProgram::receive(const Deadline& deadline) {
    std::string line;
    for (char letter = 0;;) {
        pollfd end{control_.get(), POLLIN, 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.remaining());
        const int ready =
            retry_on_signal([&] { return ::poll(&end, 1, static_cast<int>(left.count())); });
        if (ready <= 0 || ::recv(control_.get(), &letter, 1, MSG_DONTWAIT) != 1) {
            return {};
        }
        if (letter == '\n') {
            return line;
        }
        line += letter;
    }
}

bool PresenterProgram::is_awake() {
    return ::send(control_.get(), &wire::ask_awake, 1, MSG_DONTWAIT | MSG_NOSIGNAL) == 1 &&
           receive(Deadline::after(patience)) == wire::awake;
}

Descriptor PresenterProgram::new_line() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
        return {};
    }
    Descriptor ours(ends[0]);
    const Descriptor its(ends[1]);
    char letter = wire::new_line;
    iovec data{&letter, 1};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &ends[1], sizeof(int));
    const bool sent = ::sendmsg(control_.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL) == 1;
    return sent ? std::move(ours) : Descriptor();
}

void PresenterProgram::kill() const {
    ::pidfd_send_signal(process_.get(), SIGKILL, nullptr, 0);
}

} // namespace tarnel
