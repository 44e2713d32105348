#pragma once

#include "platform/files/file.h"
#include "platform/sockets/socket.h"

#include <array>

/// A connection as a file, for archives: a read is one receive and gives what that gave, 0 after
/// the peer's close; a write sends everything. Errors become CFileException with the socket error.
/// There is no position. The socket belongs to the caller, outlives the file and is not closed by
/// it.
class TARNEL_PLATFORM_API CSocketFile final : public CFile {
    DECLARE_DYNAMIC(CSocketFile)

    explicit CSocketFile(CSocket* socket);
    ~CSocketFile() override;

    UINT Read(void* buffer, UINT count) override;
    void Write(const void* buffer, UINT count) override;

    /// Looks at what has come, without waiting and without taking it: reads are served from there,
    /// until Settle() takes what they have had from the socket. The number of bytes, 0 after the
    /// peer's close, or SOCKET_ERROR.
    int Look();

    /// Whether something that was looked at has not been read yet.
    bool HasSeen() const { return read_ < seen_; }

    void Settle();

    /// Throws CNotSupportedException.
    std::int64_t Seek(std::int64_t offset, UINT from) override;

  protected:
    bool gives_what_has_come() const override { return true; }

  private:
    CSocket* const socket_;
    std::array<char, 4096> looked_at_;
    int seen_ = 0; ///< how much of it is there, and how much was read
    int read_ = 0;
};
