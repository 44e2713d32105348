#include "platform/files/archive.h"

#include "platform/files/file.h"
#include "platform/files/file_exceptions.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>

namespace {

constexpr int least_buffer_size = 128;

} // namespace

CArchive::CArchive(CFile* file, UINT mode, int buffer_size)
    : file_(file), loading_((mode & load) != 0), only_needed_(file->gives_what_has_come()),
      size_(static_cast<std::size_t>(std::max(buffer_size, least_buffer_size))),
      buffer_(std::make_unique<BYTE[]>(size_)), next_(buffer_.get()), end_(next_) {}

CArchive::~CArchive() noexcept(false) {
    if (file_ && std::uncaught_exceptions() == 0) {
        Close();
    }
}

/// Has at least `count` unread bytes in the buffer; false when the file ends before.
bool CArchive::fill(std::size_t count) {
    const auto held = static_cast<std::size_t>(end_ - next_);
    std::memmove(buffer_.get(), next_, held);
    next_ = buffer_.get();
    end_ = next_ + held;
    for (;;) {
        const auto unread = static_cast<std::size_t>(end_ - next_);
        if (unread >= count) {
            return true;
        }
        const std::size_t wanted = (only_needed_ ? count : size_) - unread;
        const UINT got = file_->Read(end_, static_cast<UINT>(wanted));
        if (got == 0) {
            return false;
        }
        end_ += got;
    }
}

/// The same for the extraction of a value.
void CArchive::need(std::size_t count) {
    if (!loading_) {
        AfxThrowArchiveException(CArchiveException::writeOnly);
    }
    if (!file_ || !fill(count)) {
        AfxThrowArchiveException(CArchiveException::endOfFile);
    }
}

CArchive& CArchive::operator>>(DWORD& value) {
    static_assert(std::endian::native == std::endian::little);
    if (end_ - next_ < static_cast<std::ptrdiff_t>(sizeof value)) {
        need(sizeof value);
    }
    std::memcpy(&value, next_, sizeof value);
    next_ += sizeof value;
    return *this;
}

/// What is buffered, then whole buffers' worth straight from the file, the rest through the buffer.
UINT CArchive::Read(void* bytes, UINT count) {
    if (!loading_) {
        AfxThrowArchiveException(CArchiveException::writeOnly);
    }
    auto* to = static_cast<BYTE*>(bytes);
    const auto take_buffered = [&](UINT wanted) {
        const UINT taken = std::min(wanted, static_cast<UINT>(end_ - next_));
        std::copy_n(next_, taken, to);
        next_ += taken;
        to += taken;
        return wanted - taken;
    };
    UINT left = take_buffered(count);
    if (left == 0 || !file_) {
        return count - left;
    }
    UINT straight = left - left % static_cast<UINT>(size_);
    left -= straight;
    while (straight > 0) {
        const UINT got = file_->Read(to, straight);
        if (got == 0) {
            return count - left - straight;
        }
        to += got;
        straight -= got;
    }
    fill(left);
    return count - take_buffered(left);
}

void CArchive::Write(const void* bytes, UINT count) {
    if (loading_ || !file_) {
        AfxThrowArchiveException(loading_ ? CArchiveException::readOnly
                                          : CArchiveException::genericException);
    }
    const auto* from = static_cast<const BYTE*>(bytes);
    const auto put_in_buffer = [&](UINT size) {
        std::copy_n(from, size, buffer_.get() + stored_);
        stored_ += size;
        from += size;
        count -= size;
    };
    put_in_buffer(std::min(count, static_cast<UINT>(size_ - stored_)));
    if (count == 0) {
        return;
    }
    Flush();
    if (const UINT straight = count - count % static_cast<UINT>(size_)) {
        file_->Write(from, straight);
        from += straight;
        count -= straight;
    }
    put_in_buffer(count);
}

void CArchive::Flush() {
    if (!file_) {
        return;
    }
    if (loading_ && next_ != end_) {
        file_->Seek(next_ - end_, CFile::current);
        next_ = end_;
    }
    if (stored_ > 0) {
        file_->Write(buffer_.get(), static_cast<UINT>(stored_));
        stored_ = 0;
    }
}

void CArchive::Close() {
    Flush();
    file_ = nullptr;
}

void CArchive::Abort() {
    file_ = nullptr;
    next_ = end_;
    stored_ = 0;
}
