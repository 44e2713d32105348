#pragma once

#include "platform/files/archive.h"
#include "platform/sockets/socket_file.h"

namespace tarnel {

/// The bytes of one connection: a file over its socket, and an archive for each direction. Calls
/// that use it hold it, so that it outlives them whatever their handlers do to the connection.
class SocketStream {
  public:
    explicit SocketStream(CSocket& socket) : file(&socket) {}

    SocketStream(const SocketStream&) = delete;
    SocketStream& operator=(const SocketStream&) = delete;

    ~SocketStream() { close(); }

    /// Writes what is still to be sent, and detaches the archives, whatever comes of that.
    void close();

    static constexpr int buffer_size = 4096;

    CSocketFile file; // the archives stand on it
    CArchive receiving{&file, CArchive::load, buffer_size};
    CArchive sending{&file, CArchive::store, buffer_size};
};

} // namespace tarnel
