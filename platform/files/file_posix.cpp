#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/files/file.h"
#include "platform/files/file_exceptions.h"
#include "platform/files/file_sharing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

IMPLEMENT_DYNAMIC(CFile, CObject)

namespace {

constexpr UINT share_mask = 0x70;

int cause_of(int error) {
    switch (error) {
    case ENOENT:
        return CFileException::fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return CFileException::badPath;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
        return CFileException::accessDenied;
    case ETXTBSY:
        return CFileException::sharingViolation;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return CFileException::diskFull;
    default:
        return CFileException::genericException;
    }
}

[[noreturn]] void throw_errno() {
    const int error = errno;
    AfxThrowFileException(cause_of(error), static_cast<LONG>(tarnel::error_from_errno(error)));
}

/// What a system call gave, unless that is its error.
template <typename Result>
Result checked(Result result) {
    if (result < 0) {
        throw_errno();
    }
    return result;
}

int open_flags(UINT flags) {
    constexpr int access[] = {O_RDONLY, O_WRONLY, O_RDWR};
    return access[flags & 3] | (flags & CFile::modeCreate ? O_CREAT : 0) | O_CLOEXEC;
}

bool is_known(UINT flags) {
    const UINT share = flags & share_mask;
    return share == CFile::shareDenyWrite
               ? (flags & 3) == CFile::modeRead && !(flags & CFile::modeCreate)
               : (flags & 3) != 3 && (share == 0 || share == CFile::shareDenyNone);
}

/// The file, open as it is to be and entered as such; none with errno.
tarnel::Descriptor open_file(LPCSTR name, UINT flags) {
    tarnel::Descriptor file(
        tarnel::retry_on_signal([&] { return ::open(name, open_flags(flags), 0666); }));
    const bool empties = (flags & CFile::modeCreate) && !(flags & CFile::modeNoTruncate);
    const bool writes = empties || (flags & 3) != CFile::modeRead;
    const bool denies = (flags & share_mask) == CFile::shareDenyWrite;
    if (file && !tarnel::enter_sharing(file.get(), writes, denies)) {
        errno = ETXTBSY;
        return {};
    }
    // Only now that nobody minds. What has no contents cannot lose them.
    if (file && empties && ::truncate(name, 0) != 0 && errno != EINVAL) {
        tarnel::leave_sharing(file.get());
        return {};
    }
    return file;
}

} // namespace

CFile::CFile() = default;

CFile::~CFile() {
    CFile::Abort();
}

BOOL CFile::Open(LPCSTR name, UINT flags, CFileException* error) {
    errno = EINVAL;
    if (descriptor_ < 0 && name && is_known(flags)) {
        descriptor_ = open_file(name, flags).release();
        if (descriptor_ >= 0) {
            return TRUE;
        }
    }
    if (error) {
        error->m_lOsError = static_cast<LONG>(tarnel::error_from_errno(errno));
        error->m_cause = cause_of(errno);
    }
    return FALSE;
}

BOOL CFile::GetStatus(LPCSTR name, CFileStatus& status) {
    struct stat file {};

    if (::stat(name, &file) != 0) {
        return FALSE;
    }
    status.m_size = file.st_size;
    return TRUE;
}

UINT CFile::Read(void* buffer, UINT count) {
    UINT done = 0;
    while (done < count) {
        const ssize_t got = checked(tarnel::retry_on_signal(
            [&] { return ::read(descriptor_, static_cast<char*>(buffer) + done, count - done); }));
        if (got == 0) {
            break;
        }
        done += static_cast<UINT>(got);
    }
    return done;
}

void CFile::Write(const void* buffer, UINT count) {
    for (UINT done = 0; done < count;) {
        done += static_cast<UINT>(checked(tarnel::retry_on_signal([&] {
            return ::write(descriptor_, static_cast<const char*>(buffer) + done, count - done);
        })));
    }
}

std::int64_t CFile::Seek(std::int64_t offset, UINT from) {
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    return checked(::lseek(descriptor_, offset, origins[from % 3]));
}

void CFile::Close() {
    // The descriptor is gone even when its last words are an error.
    const int descriptor = std::exchange(descriptor_, -1);
    if (descriptor >= 0) {
        tarnel::leave_sharing(descriptor);
        checked(::close(descriptor));
    }
}

void CFile::Abort() {
    const tarnel::Descriptor closed(std::exchange(descriptor_, -1));
    tarnel::leave_sharing(closed.get());
}
