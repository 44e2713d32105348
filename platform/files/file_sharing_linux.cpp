#include "platform/base/descriptor.h"
#include "platform/base/never_destroyed.h"
#include "platform/files/file_sharing.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tarnel {
namespace {

namespace fs = std::filesystem;

/// Of a file that nobody tells about: still for so long, and nobody writes it.
constexpr std::chrono::milliseconds time_between_looks(50);

struct Opened {
    int descriptor;
    dev_t device;
    ino_t file;
    bool writes;
    bool denies;
};

struct OpenFiles {
    std::mutex sharing_lock;
    std::vector<Opened> all;
};

OpenFiles& open_files() {
    static NeverDestroyed<OpenFiles> instance;
    return instance.get();
}

bool is_same(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

enum class Writers { none, some, unknown };

/// A lease for reading is granted only while nobody has the file open for writing. It is given back
/// at once; who opens the file for writing in between has to wait that long, and the signal that
/// announces this is one that does nothing.
Writers writers_by_lease(int descriptor) {
    ::fcntl(descriptor, F_SETSIG, SIGURG);
    if (::fcntl(descriptor, F_SETLEASE, F_RDLCK) == 0) {
        ::fcntl(descriptor, F_SETLEASE, F_UNLCK);
        return Writers::none;
    }
    return errno == EAGAIN ? Writers::some : Writers::unknown;
}

/// What a process's own list says of the way in which a descriptor was opened.
bool is_for_writing(const fs::path& process, const fs::path& descriptor) {
    std::ifstream facts(process / "fdinfo" / descriptor.filename());
    for (std::string name; facts >> name;) {
        unsigned flags = 0;
        if (name == "flags:" && facts >> std::oct >> flags) {
            return (flags & O_ACCMODE) != O_RDONLY;
        }
    }
    return false;
}

Writers writers_in(const fs::path& process, const struct stat& file) {
    std::error_code error;
    for (fs::directory_iterator entry(process / "fd", error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat opened {};

        if (::stat(entry->path().c_str(), &opened) == 0 && is_same(opened, file) &&
            is_for_writing(process, entry->path())) {
            return Writers::some;
        }
    }
    return error == std::errc::permission_denied ? Writers::unknown : Writers::none;
}

Writers writers_by_processes(const struct stat& file) {
    Writers writers = Writers::none;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (name.find_first_not_of("0123456789") != name.npos) {
            continue;
        }
        const Writers here = writers_in(entry->path(), file);
        if (here == Writers::some) {
            return here;
        }
        writers = here == Writers::unknown ? here : writers;
    }
    return error ? Writers::unknown : writers;
}

bool stands_still(int descriptor, const struct stat& before) {
    std::this_thread::sleep_for(time_between_looks);

    struct stat after {};

    return ::fstat(descriptor, &after) == 0 && after.st_size == before.st_size &&
           after.st_mtim.tv_sec == before.st_mtim.tv_sec &&
           after.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

bool is_written(int descriptor, const struct stat& file) {
    Writers writers = writers_by_lease(descriptor);
    if (writers == Writers::unknown) {
        writers = writers_by_processes(file);
    }
    return writers == Writers::unknown ? !stands_still(descriptor, file) : writers == Writers::some;
}

} // namespace

bool enter_sharing(int descriptor, bool writes, bool denies) {
    struct stat file {};

    if (::fstat(descriptor, &file) != 0 || (denies && is_written(descriptor, file))) {
        return false;
    }
    OpenFiles& files = open_files();
    const std::lock_guard guard(files.sharing_lock);
    const bool refused = std::ranges::any_of(files.all, [&](const Opened& other) {
        return other.device == file.st_dev && other.file == file.st_ino &&
               ((writes && other.denies) || (denies && other.writes));
    });
    if (!refused) {
        files.all.push_back({descriptor, file.st_dev, file.st_ino, writes, denies});
    }
    return !refused;
}

/// Asked about a file that lies in memory.
bool system_tells_of_writers() {
    const Descriptor file(::memfd_create("tarnel", MFD_CLOEXEC));
    return file && writers_by_lease(file.get()) != Writers::unknown;
}

void leave_sharing(int descriptor) {
    OpenFiles& files = open_files();
    const std::lock_guard guard(files.sharing_lock);
    std::erase_if(files.all, [&](const Opened& opened) { return opened.descriptor == descriptor; });
}

} // namespace tarnel
