#include "platform/sockets/socket_file.h"

#include "platform/files/file_exceptions.h"

#include <algorithm>
#include <climits>

IMPLEMENT_DYNAMIC(CSocketFile, CFile)

namespace {

int checked(int count) {
    if (count == SOCKET_ERROR) {
        AfxThrowFileException(CFileException::genericException, WSAGetLastError());
    }
    return count;
}

} // namespace

CSocketFile::CSocketFile(CSocket* socket) : socket_(socket) {}

CSocketFile::~CSocketFile() = default;

UINT CSocketFile::Read(void* buffer, UINT count) {
    const UINT most = std::min<UINT>(count, INT_MAX);
    return static_cast<UINT>(checked(socket_->Receive(buffer, static_cast<int>(most))));
}

void CSocketFile::Write(const void* buffer, UINT count) {
    const auto* from = static_cast<const char*>(buffer);
    while (count > 0) {
        const auto most = static_cast<int>(std::min<UINT>(count, INT_MAX));
        const auto sent = static_cast<UINT>(checked(socket_->Send(from, most)));
        from += sent;
        count -= sent;
    }
}

std::int64_t CSocketFile::Seek(std::int64_t, UINT) {
    AfxThrowNotSupportedException();
}
