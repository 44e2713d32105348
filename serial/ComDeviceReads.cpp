// Reading on request from a serial device that has no reader thread.

#include "platform/base/last_error.h"
#include "platform/threads/clock.h"
#include "serial/ComDevice.h"

#include <algorithm>
#include <array>

namespace {

/// The read time-out of a port, put back at the end.
class ReadTimeout {
  public:
    explicit ReadTimeout(HANDLE port) : port_(port) { GetCommTimeouts(port_, &saved_); }

    ReadTimeout(const ReadTimeout&) = delete;
    ReadTimeout& operator=(const ReadTimeout&) = delete;

    ~ReadTimeout() { SetCommTimeouts(port_, &saved_); }

    /// For reads that start from now on, in milliseconds; at least 1, as 0 is without limit.
    void set(DWORD timeout) const {
        const COMMTIMEOUTS timeouts{0, 0, std::max<DWORD>(timeout, 1),
                                    saved_.WriteTotalTimeoutMultiplier,
                                    saved_.WriteTotalTimeoutConstant};
        SetCommTimeouts(port_, &timeouts);
    }

  private:
    const HANDLE port_;
    COMMTIMEOUTS saved_{};
};

/// What is left of `timeout` milliseconds since the tick `start`.
DWORD left_of(DWORD timeout, DWORD start) {
    const DWORD passed = GetTickCount() - start;
    return passed < timeout ? timeout - passed : 0;
}

bool is_line_end(char c) {
    return c == '\0' || c == '\n' || c == '\r';
}

} // namespace

/// One read within the port's time-out. It is never left pending: it ends by itself.
bool CComDevice::ReadOnce(char* buffer, DWORD size, DWORD& count) {
    count = 0;
    return ReadFile(m_hPort, buffer, size, &count, &m_ReadOverlap) ||
           (GetLastError() == ERROR_IO_PENDING &&
            GetOverlappedResult(m_hPort, &m_ReadOverlap, &count, TRUE));
}

DWORD CComDevice::ReadCommBlock(char* buffer, DWORD count, DWORD timeout) {
    if (!m_bConnected) {
        return read_failed;
    }
    const DWORD start = GetTickCount();
    const ReadTimeout reads(m_hPort);
    ClearCommError(m_hPort, nullptr, nullptr);
    // A short read is dropped and the block starts anew, within one deadline for all attempts.
    do {
        DWORD got = 0;
        reads.set(left_of(timeout, start));
        if (!ReadOnce(buffer, count, got)) {
            return read_failed;
        }
        if (got == count) {
            return count;
        }
    } while (left_of(timeout, start) > 0);
    return read_failed;
}

DWORD CComDevice::ReadCommLine(CString& line, DWORD timeout) {
    if (!m_bConnected || timeout == 0) {
        return read_failed;
    }
    constexpr int longest_line = 999;
    std::array<char, longest_line> text;
    int length = 0;
    const DWORD start = GetTickCount();
    const ReadTimeout reads(m_hPort);
    for (DWORD left = timeout; left > 0; left = left_of(timeout, start)) {
        char c = 0;
        DWORD count = 0;
        reads.set(left);
        if (!ReadOnce(&c, 1, count)) {
            return read_failed;
        }
        const bool ends = count == 1 && is_line_end(c);
        if (count == 1 && !ends) {
            text[static_cast<std::size_t>(length++)] = c;
        }
        if (length == longest_line || (ends && length > 0)) {
            line = CString(text.data(), length);
            return static_cast<DWORD>(length);
        }
    }
    return read_failed;
}
