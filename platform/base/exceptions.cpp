#include "platform/base/exceptions.h"

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CUserException, CException)
IMPLEMENT_DYNAMIC(CNotSupportedException, CException)

CException::CException() = default;
CException::~CException() = default;

CUserException::CUserException() = default;
CUserException::~CUserException() = default;

CNotSupportedException::CNotSupportedException() = default;
CNotSupportedException::~CNotSupportedException() = default;

void AfxThrowUserException() {
    throw new CUserException;
}

void AfxThrowNotSupportedException() {
    throw new CNotSupportedException;
}
