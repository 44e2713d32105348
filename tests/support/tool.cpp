#include "tests/support/tool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <stdexcept>

namespace support {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds time_limit(60);

int milliseconds_until(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

/// Appends what has come; closes the channel at its end.
void read_from(int& descriptor, std::string& text) {
    char part[65536];
    const ssize_t count = ::read(descriptor, part, sizeof part);
    if (count > 0) {
        text.append(part, static_cast<std::size_t>(count));
    } else {
        ::close(descriptor);
        descriptor = -1;
    }
}

} // namespace

Tool::Tool(const std::string& arguments) {
    int output[2];
    int error[2];
    if (::pipe2(output, O_CLOEXEC) != 0 || ::pipe2(error, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const std::string command = "exec " TARNEL_TOOL " " + arguments;
    process_ = ::fork();
    if (process_ == 0) {
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(error[1], STDERR_FILENO);
        ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(output[1]);
    ::close(error[1]);
    output_.descriptor = output[0];
    error_.descriptor = error[0];
}

Tool::~Tool() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    close_output();
    if (error_.descriptor >= 0) {
        ::close(error_.descriptor);
    }
}

void Tool::signal(int number) const {
    ::kill(process_, number);
}

void Tool::close_output() {
    if (output_.descriptor >= 0) {
        ::close(output_.descriptor);
        output_.descriptor = -1;
    }
}

int Tool::wait() {
    const auto deadline = Clock::now() + time_limit;
    while (receive(milliseconds_until(deadline))) {
    }
    int status = 0;
    const bool open = output_.descriptor >= 0 || error_.descriptor >= 0;
    if (open || ::waitpid(process_, &status, 0) != process_) {
        return -1;
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool Tool::wait_for(const Channel& channel, const std::string& text) {
    const auto deadline = Clock::now() + time_limit;
    while (channel.text.find(text) == std::string::npos) {
        if (channel.descriptor < 0 || !receive(milliseconds_until(deadline))) {
            return false;
        }
    }
    return true;
}

/// Takes what comes next; false when nothing has come in time, and at the end of both channels.
bool Tool::receive(int milliseconds) {
    pollfd watched[] = {{output_.descriptor, POLLIN, 0}, {error_.descriptor, POLLIN, 0}};
    if ((output_.descriptor < 0 && error_.descriptor < 0) ||
        ::poll(watched, 2, milliseconds) <= 0) {
        return false;
    }
    for (Channel* channel : {&output_, &error_}) {
        if (watched[channel == &error_].revents) {
            read_from(channel->descriptor, channel->text);
        }
    }
    return true;
}

ToolResult run_tool(const std::string& arguments) {
    Tool tool(arguments);
    const int exit_code = tool.wait();
    return {exit_code, tool.output(), tool.diagnostics()};
}

void expect(const std::vector<ToolCall>& calls, const std::string& more) {
    for (const auto& [arguments, exit_code, output] : calls) {
        const auto result = run_tool(arguments + more);
        EXPECT_EQ(result.exit_code, exit_code) << arguments << '\n' << result.diagnostics;
        EXPECT_EQ(result.output, output) << arguments;
    }
}

} // namespace support
