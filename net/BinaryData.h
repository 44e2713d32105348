#pragma once

#include "net/SocketData.h"
#include "platform/base/types.h"

/// A block of bytes without anything around it: both ends know the size of each block beforehand.
/// The memory is the caller's, of at least the size that is set, for as long as the object may be
/// used.
class TARNEL_API tbxSocketDataBinary : public CSocketData {
    DECLARE_DYNAMIC(tbxSocketDataBinary)

    tbxSocketDataBinary();
    ~tbxSocketDataBinary() override;

    void set_size(unsigned int n) { m_Size = n; }

    unsigned int get_size() const { return m_Size; }

    void set_buf(void* p) { m_pBuffer = p; }

    void* get_buf() const { return m_pBuffer; }

    /// Writes the block, or reads it, for which it waits. 1, also when the stream has ended within
    /// the block.
    int Serialise(CArchive& ar) override;

  protected:
    // For payloads with a layout of their own.

    /// Writes the block.
    void insert_obj(CArchive& ar);

    /// Reads the block.
    void extract_obj(CArchive& ar);

    /// Drops the input that a loading archive holds, in units of four bytes: it waits for what is
    /// missing of the last one.
    void clear_archive(CArchive& ar);

  private:
    unsigned int m_Size = 0;
    void* m_pBuffer = nullptr;
};
