#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <memory>

class CFile;

/// A buffer between values and a file, in one direction: what is stored goes to the file when the
/// buffer is full or flushed, what is loaded comes from the file when the buffer is short. It adds
/// nothing to the bytes. Belongs to one thread at a time; the file belongs to the caller, and
/// outlives the archive or its Close() or Abort(). Errors of the file pass through.
class TARNEL_PLATFORM_API CArchive {
  public:
    enum Mode : UINT { store = 0, load = 1 };

    /// Over `file`, with a buffer of `buffer_size` bytes, at least 128.
    CArchive(CFile* file, UINT mode, int buffer_size = 4096);

    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    /// Does as Close() while the archive is attached, and so can throw; while an exception passes,
    /// as Abort().
    ~CArchive() noexcept(false);

    BOOL IsLoading() const { return loading_; }

    BOOL IsStoring() const { return !loading_; }

    /// The file, null after Close() or Abort().
    CFile* GetFile() const { return file_; }

    /// Nonzero when a loading archive holds no unread byte; what waits inside a connection does not
    /// count. A storing archive is never empty in this sense: there is nothing to stop at.
    BOOL IsBufferEmpty() const { return loading_ && next_ == end_; }

    /// From now on one read of a stream, such as a socket file, may bring as much as the buffer
    /// holds, instead of only what is needed. Still nothing is waited for that is not needed.
    void EnableBulkRead() { only_needed_ = false; }

    /// `count` bytes; fewer only when the file ends. Throws CArchiveException (writeOnly).
    UINT Read(void* bytes, UINT count);

    /// Throws CArchiveException: readOnly, or genericException when the archive is closed.
    void Write(const void* bytes, UINT count);

    /// Throws CArchiveException: writeOnly, or endOfFile when the file ends before the value does.
    CArchive& operator>>(BYTE& value) {
        if (next_ == end_) {
            need(1);
        }
        value = *next_++;
        return *this;
    }

    /// The same for four bytes, the lowest first.
    CArchive& operator>>(DWORD& value);

    /// Storing: writes what the buffer holds. Loading: puts the file back to the first byte that
    /// has not been read, which a socket file refuses with CNotSupportedException.
    void Flush();

    /// Flushes and detaches from the file. When that throws, the archive stays attached.
    void Close();

    /// Detaches from the file and drops what the buffer holds; never throws.
    void Abort();

  private:
    void need(std::size_t count);
    bool fill(std::size_t count);

    CFile* file_;
    const bool loading_;
    bool only_needed_;
    const std::size_t size_;
    const std::unique_ptr<BYTE[]> buffer_;
    BYTE* next_; ///< loading: the unread bytes lie from here ...
    BYTE* end_;  ///< ... to here
    std::size_t stored_ = 0;
};
