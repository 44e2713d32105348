#include "net/BinaryData.h"

#include "platform/files/archive.h"

IMPLEMENT_DYNAMIC(tbxSocketDataBinary, CSocketData)

tbxSocketDataBinary::tbxSocketDataBinary() = default;

tbxSocketDataBinary::~tbxSocketDataBinary() = default;

int tbxSocketDataBinary::Serialise(CArchive& ar) {
    if (ar.IsStoring()) {
        insert_obj(ar);
    } else {
        extract_obj(ar);
    }
    return 1;
}

void tbxSocketDataBinary::insert_obj(CArchive& ar) {
    ar.Write(m_pBuffer, m_Size);
}

void tbxSocketDataBinary::extract_obj(CArchive& ar) {
    ar.Read(m_pBuffer, m_Size);
}

void tbxSocketDataBinary::clear_archive(CArchive& ar) {
    while (!ar.IsBufferEmpty()) {
        DWORD dropped = 0;
        ar >> dropped;
    }
}
