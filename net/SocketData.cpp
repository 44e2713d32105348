#include "net/SocketData.h"

IMPLEMENT_DYNAMIC(CSocketData, CObject)

CSocketData::CSocketData() = default;

CSocketData::~CSocketData() = default;

int CSocketData::Dump(int) const {
    return 1;
}

void CSocketData::Clone(CSocketData*&) {}
