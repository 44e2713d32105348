#pragma once

#include "platform/base/exceptions.h"

/// What went wrong with a file, or with the connection behind a socket file.
class TARNEL_PLATFORM_API CFileException final : public CException {
    DECLARE_DYNAMIC(CFileException)

    enum Cause {
        none = 0,
        genericException = 1,
        fileNotFound = 2,
        badPath = 3,
        accessDenied = 5,
        sharingViolation = 11,
        diskFull = 13,
    };

    /// `os_error` is the last error that stands for the cause, of a socket file the socket error.
    explicit CFileException(int cause = none, LONG os_error = -1)
        : m_cause(cause), m_lOsError(os_error) {}

    ~CFileException() override;

    int m_cause;
    LONG m_lOsError;
};

/// What went wrong between an archive and its user.
class TARNEL_PLATFORM_API CArchiveException final : public CException {
    DECLARE_DYNAMIC(CArchiveException)

    enum Cause {
        none = 0,
        genericException = 1, ///< the archive is closed
        readOnly = 2,         ///< writing to an archive that loads
        endOfFile = 3,        ///< the file ended within a value
        writeOnly = 4,        ///< reading from an archive that stores
    };

    explicit CArchiveException(int cause = none) : m_cause(cause) {}

    ~CArchiveException() override;

    int m_cause;
};

[[noreturn]] TARNEL_PLATFORM_API void AfxThrowFileException(int cause, LONG os_error = -1);
[[noreturn]] TARNEL_PLATFORM_API void AfxThrowArchiveException(int cause);
