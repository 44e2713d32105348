#include "tests/support/x_server.h"

#include "tests/support/eventually.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <utility>

namespace support {
namespace {

void end_program(pid_t& program) {
    if (program > 0) {
        ::kill(program, SIGTERM);
        ::waitpid(std::exchange(program, -1), nullptr, 0);
    }
}

/// Up to the line end or the end of the file.
std::string read_line(int descriptor) {
    std::string line;
    for (char letter = 0; ::read(descriptor, &letter, 1) == 1 && letter != '\n';) {
        line += letter;
    }
    return line;
}

} // namespace

XServer::XServer(bool managed) {
    std::string pattern = std::filesystem::temp_directory_path() / "screen-XXXXXX";
    folder_ = ::mkdtemp(pattern.data());
    environment_.set("XDG_RUNTIME_DIR", folder_);
    environment_.set("WAYLAND_DISPLAY", std::nullopt);
    start_server();
    if (managed) {
        start_window_manager();
    }
}

XServer::~XServer() {
    end();
    std::filesystem::remove_all(folder_);
}

void XServer::end() {
    end_program(manager_);
    end_program(server_);
}

void XServer::start_server() {
    int number[2];
    ASSERT_EQ(::pipe2(number, O_CLOEXEC), 0);
    server_ = start_program({"Xvfb", "-displayfd", std::to_string(number[1]), "-screen", "0",
                             "1280x1024x24", "-nolisten", "tcp", "-noreset"},
                            number[1]);
    ::close(number[1]);
    const std::string line = read_line(number[0]);
    ::close(number[0]);
    EXPECT_NE(line, "") << "no Xvfb";
    environment_.set("DISPLAY", ":" + line);
}

void XServer::start_window_manager() {
    const std::string mark = folder_ + "/manager-is-ready";
    manager_ = start_program({"openbox", "--sm-disable", "--startup", "touch " + mark});
    EXPECT_TRUE(eventually([&mark] { return std::filesystem::exists(mark); }))
        << "no window manager";
}

pid_t start_program(const std::vector<std::string>& command, int kept) {
    const pid_t program = ::fork();
    if (program == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::fcntl(kept, F_SETFD, 0);
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    return program;
}

std::string output_of(const std::string& command) {
    std::string text;
    if (FILE* const output = ::popen(command.c_str(), "re")) {
        for (int letter = std::getc(output); letter != EOF; letter = std::getc(output)) {
            text += static_cast<char>(letter);
        }
        ::pclose(output);
    }
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

std::string window_titled(const std::string& title) {
    std::string window;
    const bool found = eventually([&] {
        window = xdotool("getactivewindow");
        return !window.empty() && xdotool("getwindowname " + window) == title;
    });
    EXPECT_TRUE(found) << "no window \"" << title << '"';
    return found ? window : std::string();
}

} // namespace support
