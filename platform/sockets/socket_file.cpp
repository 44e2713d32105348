#include "platform/sockets/socket_file.h"

#include "platform/files/file_exceptions.h"

#include <algorithm>
#include <climits>
#include <cstring>

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
    if (HasSeen()) {
        const int size = std::min(static_cast<int>(most), seen_ - read_);
        std::memcpy(buffer, looked_at_.data() + read_, static_cast<std::size_t>(size));
        read_ += size;
        return static_cast<UINT>(size);
    }
    Settle();
    return static_cast<UINT>(checked(socket_->Receive(buffer, static_cast<int>(most))));
}

int CSocketFile::Look() {
    Settle();
    const int count = socket_->CAsyncSocket::Receive(
        looked_at_.data(), static_cast<int>(looked_at_.size()), CAsyncSocket::MSG_PEEK);
    seen_ = std::max(count, 0);
    return count;
}

void CSocketFile::Settle() {
    while (read_ > 0) {
        const int taken = socket_->CAsyncSocket::Receive(looked_at_.data(), read_);
        if (taken <= 0) {
            break; // the connection is gone, and what has come with it
        }
        read_ -= taken;
    }
    seen_ = 0;
    read_ = 0;
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
