#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace tarnel {

/// What changes with a file's content, and is known without reading it.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

struct FileContent {
    std::string bytes;
    FileStamp stamp;
    bool settled = false; ///< a later content will have another stamp for sure
};

/// These give error codes. Only plain files of up to 256 MiB are read.
DWORD read_stamp(const std::string& path, FileStamp& stamp);
DWORD read_file(const std::string& path, FileContent& content);

/// Gives the content to `change` (nothing when there is no such file) and writes what that makes of
/// it, unless it gives false. A crash leaves the file as before or as after it, a loss of power
/// too, and it is on the disk at the end. Nobody else changes the file meanwhile in this way;
/// ERROR_BUSY when others keep us from it for 5 seconds. The file keeps its permissions and owner
/// as far as the process may give them, and a link to it stays one.
DWORD change_file(const std::string& path, const std::function<bool(std::string& bytes)>& change);

} // namespace tarnel
