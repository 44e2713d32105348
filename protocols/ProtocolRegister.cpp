#include "protocols/ProtocolRegister.h"

#include "platform/base/diagnostics.h"

constinit ProtocolRegister* ProtocolRegister::m_Root = nullptr;

ProtocolRegister::ProtocolRegister(const char* protocol_name, CRuntimeClass* protocol_class)
    : name(protocol_name), runtime_class(protocol_class), next(m_Root) {
    for (const char* piece :
         {" Installing Protocol ", name, " Before protocol ", next ? next->name : "NULL", "\n"}) {
        OutputDebugStringA(piece);
    }
    m_Root = this;
}

ProtocolRegister::~ProtocolRegister() {
    for (const char* piece : {" Removing Protocol ", name, "\n"}) {
        OutputDebugStringA(piece);
    }
    ProtocolRegister** link = &m_Root;
    while (*link && *link != this) {
        link = &(*link)->next;
    }
    if (*link) {
        *link = next;
    }
}
