#include "tools/data_output.h"

#include "tools/verbs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

void fail_to_open(const std::string& path, int error, const char* instead) {
    if (error == EEXIST) {
        fail(exit_file_exists, fmt::format("{} exists; use {}.", path, instead));
    }
    fail(exit_not_written,
         fmt::format("{} cannot be written: {}.", path, std::generic_category().message(error)));
}

DataOutput::DataOutput(const std::string& path, bool append) {
    ::signal(SIGPIPE, SIG_IGN); // that nobody reads is an answer of write()
    if (path.empty()) {
        return;
    }
    file_ =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_EXCL), 0666);
    if (file_ < 0) {
        fail_to_open(path, errno, "--append or another name");
    }
    size_ = ::lseek(file_, 0, SEEK_END);
    name_ = path;
}

DataOutput::~DataOutput() {
    if (is_file()) {
        ::close(file_);
    }
}

int DataOutput::descriptor() const {
    return is_file() ? file_ : STDOUT_FILENO;
}

bool DataOutput::write(std::string_view text, int stop) {
    const auto whole = static_cast<long>(text.size());
    while (!text.empty()) {
        pollfd watched[] = {{descriptor(), POLLOUT, 0}, {stop, POLLIN, 0}};
        if (::poll(watched, 2, -1) > 0 && !watched[0].revents) {
            return false;
        }
        const ssize_t written = ::write(descriptor(), text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return false;
        } else if (errno != EINTR && errno != EAGAIN) {
            const int error = errno;
            [[maybe_unused]] const int cut = is_file() ? ::ftruncate(file_, size_) : 0;
            throw std::system_error(error, std::generic_category(), name_);
        }
    }
    size_ += whole;
    return true;
}
