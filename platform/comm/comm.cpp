#include "platform/comm/comm.h"

#include "platform/base/last_error.h"
#include "platform/comm/line.h"
#include "platform/threads/handle_table.h"

using tarnel::Line;

namespace {

std::shared_ptr<Line> find_line(HANDLE handle) {
    return tarnel::find_handle_as<Line>(handle);
}

BOOL answer(DWORD error) {
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}

/// Runs a call on the line behind `handle`.
template <typename Call>
BOOL with_line(HANDLE handle, Call call) {
    const auto line = find_line(handle);
    if (line) {
        call(*line);
    }
    return line != nullptr;
}

/// Answers for an operation that was started, and tells how far one got that ended at once.
BOOL started(DWORD error, const OVERLAPPED* overlapped, DWORD* count) {
    if (count && error == ERROR_SUCCESS) {
        *count = static_cast<DWORD>(overlapped->InternalHigh);
    }
    return answer(error);
}

} // namespace

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, void* attributes, DWORD creation,
                   DWORD flags, HANDLE template_file) {
    if (!name || access != (GENERIC_READ | GENERIC_WRITE) || share != 0 || attributes ||
        creation != OPEN_EXISTING || flags != FILE_FLAG_OVERLAPPED || template_file) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    auto line = Line::open(name);
    return line ? tarnel::add_handle(std::move(line)) : INVALID_HANDLE_VALUE;
}

BOOL SetupComm(HANDLE line, DWORD, DWORD) {
    return with_line(line, [](Line&) {});
}

BOOL GetCommState(HANDLE line, DCB* settings) {
    if (settings->DCBlength != sizeof *settings) {
        return answer(ERROR_INVALID_PARAMETER);
    }
    return with_line(line, [=](Line& it) { *settings = it.settings(); });
}

BOOL SetCommState(HANDLE line, const DCB* settings) {
    const auto it = find_line(line);
    return it && answer(it->set_settings(*settings));
}

BOOL GetCommTimeouts(HANDLE line, COMMTIMEOUTS* timeouts) {
    return with_line(line, [=](Line& it) { *timeouts = it.timeouts(); });
}

BOOL SetCommTimeouts(HANDLE line, const COMMTIMEOUTS* timeouts) {
    return with_line(line, [=](Line& it) { it.set_timeouts(*timeouts); });
}

BOOL SetCommMask(HANDLE line, DWORD events) {
    return with_line(line, [=](Line& it) { it.set_mask(events); });
}

BOOL WaitCommEvent(HANDLE line, DWORD* events, OVERLAPPED* overlapped) {
    const auto it = find_line(line);
    return it && answer(it->wait_events(events, overlapped));
}

BOOL ClearCommError(HANDLE line, DWORD* errors, COMSTAT* status) {
    return with_line(line, [=](Line& it) {
        COMSTAT now;
        const DWORD since = it.take_errors(now);
        if (errors) {
            *errors = since;
        }
        if (status) {
            *status = now;
        }
    });
}

BOOL PurgeComm(HANDLE line, DWORD flags) {
    return with_line(line, [=](Line& it) { it.purge(flags); });
}

BOOL EscapeCommFunction(HANDLE line, DWORD function) {
    if (function < SETRTS || function > CLRDTR) {
        return answer(ERROR_INVALID_PARAMETER);
    }
    return with_line(line, [=](Line& it) { it.escape(function); });
}

BOOL ReadFile(HANDLE line, void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const auto it = find_line(line);
    return it && started(it->read(static_cast<char*>(buffer), size, overlapped), overlapped, count);
}

BOOL WriteFile(HANDLE line, const void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const auto it = find_line(line);
    return it && started(it->write(static_cast<const char*>(buffer), size, overlapped), overlapped,
                         count);
}

BOOL GetOverlappedResult(HANDLE line, OVERLAPPED* overlapped, DWORD* count, BOOL wait) {
    const auto it = find_line(line);
    if (!it) {
        return FALSE;
    }
    DWORD error = it->outcome(*overlapped, *count);
    if (error == ERROR_IO_INCOMPLETE && !wait) {
        it->serve_operation(*overlapped);
        error = it->outcome(*overlapped, *count);
    }
    while (error == ERROR_IO_INCOMPLETE && wait) {
        if (WaitForSingleObject(overlapped->hEvent, INFINITE) == WAIT_FAILED) {
            return FALSE;
        }
        error = it->outcome(*overlapped, *count);
    }
    return answer(error);
}

DWORD tarnel::unsent_bytes(HANDLE line) {
    const auto it = find_line(line);
    return it ? it->unsent() : 0;
}

bool tarnel::take_line_break(HANDLE line) {
    const auto it = find_line(line);
    return it && it->take_break();
}
