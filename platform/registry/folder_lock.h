#pragma once

#include "platform/base/descriptor.h"
#include "platform/base/types.h"

#include <filesystem>

namespace tarnel {

/// Keeps other processes from changing the files of a folder in the same way, while it lives. The
/// lock is on the folder itself: the files in it are exchanged for others all the time.
class FolderLock {
  public:
    explicit FolderLock(const std::filesystem::path& folder);
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock();

    /// Zero when it is held; ERROR_BUSY when others kept us from it for 5 seconds.
    DWORD error() const { return error_; }

    int folder() const { return folder_.get(); }

  private:
    DWORD acquire() const;

    const Descriptor folder_;
    const DWORD error_;
};

} // namespace tarnel
