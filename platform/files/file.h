#pragma once

#include "platform/base/object.h"

class CFileException;

/// What is known of a file without opening it.
struct CFileStatus {
    std::int64_t m_size; ///< in bytes
};

/// A file of bytes: one on disk, or what a derived class puts in its place. Used by one thread at
/// a time.
class TARNEL_PLATFORM_API CFile : public CObject {
    DECLARE_DYNAMIC(CFile)

    enum OpenFlags : UINT {
        modeRead = 0,
        modeWrite = 1,
        modeReadWrite = 2,
        shareDenyWrite = 0x20, ///< with modeRead only
        shareDenyNone = 0x40,
        modeCreate = 0x1000,     ///< makes the file, or empties the one that is there
        modeNoTruncate = 0x2000, ///< with modeCreate: the one that is there keeps its contents
        typeBinary = 0x8000,     ///< always so
    };

    enum SeekPosition : UINT { begin, current, end };

    CFile();

    /// Closes the file without telling of errors.
    ~CFile() override;

    /// Opens the file `name`; the object must have no file. With shareDenyWrite that fails while
    /// anybody on the machine has it open for writing, and until it is closed this process does not
    /// open it for writing (other processes may). Without, others are denied nothing. FALSE, with
    /// the reason in `error` unless that is null, when it cannot be opened so; never throws.
    virtual BOOL Open(LPCSTR name, UINT flags, CFileException* error = nullptr);

    /// Of a folder, too. FALSE when nothing has that name.
    static BOOL GetStatus(LPCSTR name, CFileStatus& status);

    // What fails from here on throws CFileException.

    /// Up to `count` bytes; fewer only at the end of the file.
    virtual UINT Read(void* buffer, UINT count);

    virtual void Write(const void* buffer, UINT count);

    /// The new position, counted from the beginning.
    virtual std::int64_t Seek(std::int64_t offset, UINT from);

    /// Closes the file, if there is one.
    virtual void Close();

    /// The same without telling of errors.
    virtual void Abort();

  protected:
    friend class CArchive;

    /// Whether a read waits until something has come and gives that, so that asking for more than
    /// is needed would change when it ends.
    virtual bool gives_what_has_come() const { return false; }

  private:
    int descriptor_ = -1;
};
