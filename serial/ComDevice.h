#pragma once

#include "platform/base/string.h"
#include "platform/comm/comm.h"
#include "platform/threads/thread.h"
#include "serial/PortConfiguration.h"

#include <atomic>
#include <memory>

/// One serial port: opened and set up from its configuration, written and read on request, and with
/// a reader thread on demand, which hands over what is received as soon as it arrives.
///
/// A subclass overrides OnReadCommBlock() and is called on the reader thread; all else is for the
/// application's threads. The class takes no lock. A subclass calls CloseConnection() in its own
/// destructor, so that the reader never meets half an object.
class TARNEL_API CComDevice : public CObject {
    DECLARE_DYNAMIC(CComDevice)

    CComDevice();

    /// Closes the port. Not on the reader thread.
    ~CComDevice() override;

    /// Called once on the reader thread when it ends in good order.
    virtual void OnThreadEnd();

    /// Called on the reader thread when characters have been received, again and again while it
    /// returns a positive value; 0 sends the thread back to waiting, a negative value ends it. The
    /// base reads what waits, up to 1024 bytes, into the receive buffer and returns their number.
    virtual int OnReadCommBlock();

    /// Called once on the reader thread when it starts.
    virtual void OnThreadStart();

    /// Opens and sets up the port, with a reader thread if `start_reader` is nonzero. 1 on success
    /// and for a device that is open, which stays as it is; 0 on failure.
    int OpenConnection(int start_reader);

    /// Sets the open port up from the configuration; nonzero on success.
    int SetupConnection();

    /// Opens the settings dialog on the configuration, the port locked while the device is open,
    /// and sets the open port up from what it left, whichever way it ended. 1.
    int EditParameters();

    /// Ends the reader thread and closes the port: 1, or 0 when it was not open. The calling
    /// thread's messages are dispatched meanwhile. Never waits for the line itself.
    int CloseConnection();

    /// PURGE_ flags; 0 when the device is not open.
    int PurgeComm(unsigned int flags);

    /// Writes `length` bytes within the write time-out of 1 s: 1 when all were taken, else 0.
    int WriteCommBlock(const char* data, DWORD length);
    int WriteCommBlock(const char* text);

    /// Reads exactly `count` bytes within `timeout` milliseconds: `count`, or read_failed. Only
    /// without reader thread, one read at a time, as ReadCommLine.
    DWORD ReadCommBlock(char* buffer, DWORD count, DWORD timeout);

    /// Reads a line within `timeout` milliseconds: its length, at least 1, with `line` changed; or
    /// read_failed. Lines end with CR, LF or NUL; one of more than 999 characters is ended there,
    /// and the rest is the next line.
    DWORD ReadCommLine(CString& line, DWORD timeout);

    int IsConnected() const { return m_bConnected; }

    HANDLE GetHandle() const { return m_hPort; }

    /// Whether bytes are missing or damaged right before those that come next: the line was lost
    /// and is back, or has reported an error. Each such place is told once. On the reader thread,
    /// in OnReadCommBlock() before the base is called: the base never reads past such a place.
    bool TakeBreak() { return tarnel::take_line_break(m_hPort); }

    static constexpr DWORD read_failed = 0xFFFFFFFF;
    static constexpr DWORD receive_buffer_size = 1024;

    CComDeviceConfiguration m_Configuration; ///< the owner's to change; see SetupConnection()

  protected:
    HANDLE m_hPort = INVALID_HANDLE_VALUE;
    std::atomic<int> m_bConnected = 0;
    CWinThread* m_pReaderThread = nullptr;
    OVERLAPPED m_ReadOverlap{};
    OVERLAPPED m_WriteOverlap{};
    std::atomic<int> m_bStop = 0;
    std::unique_ptr<char[]> m_pReceiveBuffer;

  private:
    int StartThread();
    void StopThread();
    static UINT ReaderThreadProc(LPVOID device);

    UINT ReadUntilStopped();
    bool ReadWaiting();
    void DispatchWaitingMessages();
    int AbandonOpening();
    bool ReadOnce(char* buffer, DWORD size, DWORD& count);

    OVERLAPPED m_WaitOverlap{}; ///< the event wait's own: it runs while others read
};
