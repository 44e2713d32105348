#include "platform/files/file_exceptions.h"

IMPLEMENT_DYNAMIC(CFileException, CException)
IMPLEMENT_DYNAMIC(CArchiveException, CException)

CFileException::~CFileException() = default;
CArchiveException::~CArchiveException() = default;

void AfxThrowFileException(int cause, LONG os_error) {
    throw new CFileException(cause, os_error);
}

void AfxThrowArchiveException(int cause) {
    throw new CArchiveException(cause);
}
