#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"
#include "platform/threads/wait.h"

// Serial lines. A line is served by the threads that wait for it: an operation that is pending goes
// on while some thread waits for its event or asks for its result.

struct OVERLAPPED {
    std::uint64_t Internal;     ///< the layer's
    std::uint64_t InternalHigh; ///< the layer's
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent; ///< a manual-reset event, set when the operation has ended
};

static_assert(sizeof(OVERLAPPED) == 32);

/// Settings of a line. The flag words stand in the order of the original's bit fields.
struct DCB {
    DWORD DCBlength;
    DWORD BaudRate; ///< bits per second, any rate that the port can make
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1; ///< kept, without effect: reads go on after a line error
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;  ///< kept; the tty decides
    WORD XoffLim; ///< kept; the tty decides
    BYTE ByteSize;
    BYTE Parity;   ///< 0 none, 1 odd, 2 even, 3 mark, 4 space
    BYTE StopBits; ///< 0 one, 1 one and a half, 2 two
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};

static_assert(sizeof(DCB) == 28);

struct COMSTAT {
    DWORD flags;    ///< why sending is held up; not told here, always 0
    DWORD cbInQue;  ///< received bytes that wait to be read, as far as they have been fetched
    DWORD cbOutQue; ///< not told here, always 0; see tarnel::unsent_bytes()
};

static_assert(sizeof(COMSTAT) == 12);

/// All in milliseconds; see the system's documentation for how they combine.
struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};

static_assert(sizeof(COMMTIMEOUTS) == 20);

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(~std::uint64_t{0}))

constexpr DWORD DTR_CONTROL_DISABLE = 0, DTR_CONTROL_ENABLE = 1, DTR_CONTROL_HANDSHAKE = 2;
constexpr DWORD RTS_CONTROL_DISABLE = 0, RTS_CONTROL_ENABLE = 1, RTS_CONTROL_HANDSHAKE = 2;

constexpr DWORD EV_RXCHAR = 0x01, EV_CTS = 0x08, EV_ERR = 0x80;
constexpr DWORD CE_OVERRUN = 2, CE_RXPARITY = 4, CE_FRAME = 8, CE_BREAK = 0x10;
constexpr DWORD PURGE_TXABORT = 1, PURGE_RXABORT = 2, PURGE_TXCLEAR = 4, PURGE_RXCLEAR = 8;
constexpr DWORD SETRTS = 3, CLRRTS = 4, SETDTR = 5, CLRDTR = 6;

/// Opens the serial port `name`: "COM3", "COM3:" in any case (see docs/ports.md for what they
/// stand for) or the path of a device. Both ways of access, no sharing, OPEN_EXISTING and
/// FILE_FLAG_OVERLAPPED are the only form. The port is locked against other programs, raw, and
/// what has arrived already stays to be read. INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND,
/// ERROR_ACCESS_DENIED (no rights, or held: the holder is reported) or ERROR_INVALID_PARAMETER.
TARNEL_PLATFORM_API HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, void* attributes,
                                       DWORD creation, DWORD flags, HANDLE template_file);

/// Queue sizes are a recommendation that is not needed here.
TARNEL_PLATFORM_API BOOL SetupComm(HANDLE line, DWORD input_size, DWORD output_size);

TARNEL_PLATFORM_API BOOL GetCommState(HANDLE line, DCB* settings);

/// FALSE and ERROR_INVALID_PARAMETER for settings that make no sense or that the port refuses; it
/// keeps the ones it had then. A pseudo terminal has no frame and no rate; it takes any.
TARNEL_PLATFORM_API BOOL SetCommState(HANDLE line, const DCB* settings);

TARNEL_PLATFORM_API BOOL GetCommTimeouts(HANDLE line, COMMTIMEOUTS* timeouts);

/// For operations that start afterwards.
TARNEL_PLATFORM_API BOOL SetCommTimeouts(HANDLE line, const COMMTIMEOUTS* timeouts);

/// Forgets the events so far and ends a wait for events that is pending, with no event.
TARNEL_PLATFORM_API BOOL SetCommMask(HANDLE line, DWORD events);

/// TRUE with the events in `events` when some have been remembered since the last call, else FALSE
/// and ERROR_IO_PENDING; `events` is written when the operation ends and must live until then. One
/// wait at a time. Only received characters and line errors end a wait.
TARNEL_PLATFORM_API BOOL WaitCommEvent(HANDLE line, DWORD* events, OVERLAPPED* overlapped);

/// The errors since the last call, and how many bytes wait.
TARNEL_PLATFORM_API BOOL ClearCommError(HANDLE line, DWORD* errors, COMSTAT* status);

TARNEL_PLATFORM_API BOOL PurgeComm(HANDLE line, DWORD flags);

/// SETDTR, CLRDTR, SETRTS and CLRRTS; TRUE without effect where the line has no modem lines.
TARNEL_PLATFORM_API BOOL EscapeCommFunction(HANDLE line, DWORD function);

/// Reads within the line's time-outs: TRUE when it has ended at once, FALSE and ERROR_IO_PENDING
/// when it goes on, FALSE and another error when it failed. `count` may be null.
TARNEL_PLATFORM_API BOOL ReadFile(HANDLE line, void* buffer, DWORD size, DWORD* count,
                                  OVERLAPPED* overlapped);

TARNEL_PLATFORM_API BOOL WriteFile(HANDLE line, const void* buffer, DWORD size, DWORD* count,
                                   OVERLAPPED* overlapped);

/// The outcome of an operation and the bytes it moved; FALSE and ERROR_IO_INCOMPLETE while it goes
/// on and `wait` is FALSE. A cancelled one fails with ERROR_OPERATION_ABORTED.
TARNEL_PLATFORM_API BOOL GetOverlappedResult(HANDLE line, OVERLAPPED* overlapped, DWORD* count,
                                             BOOL wait);

namespace tarnel {

/// Whether the line's stream stands at a *break* now, and takes it: a place where bytes are missing
/// or damaged, because the line was lost and came back or reported an error. No read goes past a
/// break that has not been taken, unless it stands there already.
TARNEL_PLATFORM_API bool take_line_break(HANDLE line);

/// How many bytes the port has taken and not sent yet.
TARNEL_PLATFORM_API DWORD unsent_bytes(HANDLE line);

} // namespace tarnel
