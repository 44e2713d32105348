#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/registry/folder_lock.h"
#include "platform/registry/ini_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <string_view>

namespace tarnel {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largest_file = 256 << 20;

// Longer than a file system's clock takes for a step.
constexpr std::int64_t settling_nanoseconds = 100'000'000;

DWORD last_system_error() {
    return error_from_errno(errno);
}

Descriptor open_file(const std::string& path, int flags, mode_t mode = 0) {
    // Non-blocking, so that a pipe without a writer does not hold the caller.
    return Descriptor(retry_on_signal(
        [&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, mode); }));
}

FileStamp stamp_of(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_ctim.tv_sec,
            status.st_ctim.tv_nsec};
}

bool has_settled(const struct stat& status) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return (now.tv_sec - status.st_ctim.tv_sec) * 1'000'000'000 + now.tv_nsec -
               status.st_ctim.tv_nsec >
           settling_nanoseconds;
}

/// Fills `bytes` as far as the file goes.
bool read_all(int file, std::string& bytes) {
    std::size_t size = 0;
    while (size < bytes.size()) {
        const auto count =
            retry_on_signal([&] { return ::read(file, bytes.data() + size, bytes.size() - size); });
        if (count < 0) {
            return false;
        }
        if (count == 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return true;
}

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count =
            retry_on_signal([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

DWORD read_open_file(int file, struct stat& status, FileContent& content) {
    if (::fstat(file, &status) != 0) {
        return last_system_error();
    }
    if (!S_ISREG(status.st_mode) || status.st_size > largest_file) {
        return ERROR_ACCESS_DENIED;
    }
    content.stamp = stamp_of(status);
    content.settled = has_settled(status);
    content.bytes.resize(static_cast<std::size_t>(status.st_size));
    return read_all(file, content.bytes) ? ERROR_SUCCESS : last_system_error();
}

/// Where the file itself lies, or is to lie.
fs::path behind_links(fs::path path) {
    constexpr int most_links = 40; // as many as the system follows
    std::error_code error;
    for (int count = 0; count < most_links && fs::is_symlink(path, error); ++count) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

/// Gives `file` the owner and the permissions of `status`. Giving files away is for few: what the
/// process may not give stays its own.
bool inherit(int file, const struct stat& status) {
    const bool given = ::fchown(file, status.st_uid, status.st_gid) == 0 ||
                       ::fchown(file, static_cast<uid_t>(-1), status.st_gid) == 0;
    return ::fchmod(file, status.st_mode & 0777) == 0 && given;
}

/// A new file to take the place of the one of `status`, or of none.
Descriptor create_successor(const std::string& path, const struct stat* status) {
    ::unlink(path.c_str()); // of one who died here
    Descriptor file = open_file(path, O_WRONLY | O_CREAT | O_EXCL, status ? 0600 : 0666);
    if (file && status) {
        inherit(file.get(), *status);
    }
    return file;
}

DWORD exchange_file(int folder, const std::string& path, const struct stat* status,
                    const std::string& bytes) {
    const std::string successor = path + ".new";
    const Descriptor file = create_successor(successor, status);
    if (!file) {
        return last_system_error();
    }
    if (write_all(file.get(), bytes) && ::fsync(file.get()) == 0 &&
        ::rename(successor.c_str(), path.c_str()) == 0) {
        return ::fsync(folder) == 0 ? ERROR_SUCCESS : last_system_error();
    }
    const DWORD error = last_system_error();
    ::unlink(successor.c_str());
    return error;
}

} // namespace

DWORD read_stamp(const std::string& path, FileStamp& stamp) {
    struct stat status {};

    if (::stat(path.c_str(), &status) != 0) {
        return last_system_error();
    }
    stamp = stamp_of(status);
    return ERROR_SUCCESS;
}

DWORD read_file(const std::string& path, FileContent& content) {
    struct stat status {};

    const Descriptor file = open_file(path, O_RDONLY);
    return file ? read_open_file(file.get(), status, content) : last_system_error();
}

DWORD change_file(const std::string& path, const std::function<bool(std::string& bytes)>& change) {
    const fs::path target = behind_links(path);
    const FolderLock lock(target.parent_path());
    if (lock.error()) {
        return lock.error();
    }

    struct stat status {};

    FileContent content;
    // For writing too: who may change the folder only leaves the file alone.
    const Descriptor old = open_file(target, O_RDWR);
    if (!old && errno != ENOENT) {
        return last_system_error();
    }
    if (old) {
        if (const DWORD error = read_open_file(old.get(), status, content)) {
            return error;
        }
    }
    if (!change(content.bytes)) {
        return ERROR_SUCCESS;
    }
    return exchange_file(lock.folder(), target, old ? &status : nullptr, content.bytes);
}

} // namespace tarnel
