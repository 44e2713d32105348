#include "platform/base/object.h"

constinit CRuntimeClass CObject::classCObject({"CObject", sizeof(CObject), 0xFFFF, nullptr,
                                               nullptr});

CObject* CRuntimeClass::CreateObject() const {
    return m_pfnCreateObject ? m_pfnCreateObject() : nullptr;
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    const CRuntimeClass* record = this;
    while (record && record != base) {
        record = record->m_pBaseClass;
    }
    return record != nullptr;
}

CObject::~CObject() = default;

CRuntimeClass* CObject::GetRuntimeClass() const {
    return &classCObject;
}

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext&) const {}
