#pragma once

#include "core/export.h"
#include "platform/base/object.h"

/// One protocol that the process knows: a name to choose it by, and the record of its class, which
/// creates an object of it. A module that brings a protocol defines one static object of this; it
/// is in the list as long as the module is loaded. The list has no lock: modules are loaded and
/// unloaded while nobody walks it.
struct TARNEL_API ProtocolRegister {
    /// Becomes the head of the list. `protocol_name` outlives the object.
    ProtocolRegister(const char* protocol_name, CRuntimeClass* protocol_class);

    /// Leaves the list, wherever it stands.
    ~ProtocolRegister();

    ProtocolRegister(const ProtocolRegister&) = delete;

    /// Copies the fields; what is in the list stays so.
    ProtocolRegister& operator=(const ProtocolRegister& other) = default;

    const char* name;
    CRuntimeClass* runtime_class;
    ProtocolRegister* next; ///< registered before this one; null for none

    /// Registered last; null while there is none.
    static ProtocolRegister* m_Root;
};
