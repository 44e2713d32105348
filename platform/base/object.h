#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <new>

class CArchive;
class CDumpContext;
class CObject;

/// A class's record of itself, one for each class that declares it; built at compile time, so that
/// it is complete before any static object looks at it.
struct TARNEL_PLATFORM_API CRuntimeClass {
    LPCSTR m_lpszClassName;
    int m_nObjectSize;
    UINT m_wSchema;                  ///< 0xFFFF: not serialisable
    CObject* (*m_pfnCreateObject)(); ///< null when objects are not created through the record
    CRuntimeClass* m_pBaseClass;     ///< null for CObject

    /// A new object, which is the caller's; null without a creation function or without memory.
    CObject* CreateObject() const;

    /// Nonzero when `base` is this class or one that it derives from.
    BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

/// The root of the framework's classes. An object is copied only where its class says how.
class TARNEL_PLATFORM_API CObject {
  public:
    static CRuntimeClass classCObject;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    static CRuntimeClass* GetThisClass() { return &classCObject; }

    /// The record of the object's class, or of the nearest base that has one.
    virtual CRuntimeClass* GetRuntimeClass() const;

    virtual ~CObject();

    virtual void Serialize(CArchive& archive);
    virtual void AssertValid() const;
    virtual void Dump(CDumpContext& context) const;

    /// Nonzero when the object is of the class of `record`, or of one that derives from it.
    BOOL IsKindOf(const CRuntimeClass* record) const {
        return GetRuntimeClass()->IsDerivedFrom(record);
    }

  protected:
    CObject() = default;
};

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

/// In a class: it has a record of its own. The public part of the class begins here.
#define DECLARE_DYNAMIC(class_name)                                                                \
  public:                                                                                          \
    static CRuntimeClass class##class_name;                                                        \
    static CRuntimeClass* GetThisClass() {                                                         \
        return &class##class_name;                                                                 \
    }                                                                                              \
    CRuntimeClass* GetRuntimeClass() const override;

/// The same for a class whose objects are also created through its record.
#define DECLARE_DYNCREATE(class_name)                                                              \
    DECLARE_DYNAMIC(class_name)                                                                    \
    static CObject* CreateObject();

#define IMPLEMENT_DYNAMIC(class_name, base_name)                                                   \
    TARNEL_RUNTIME_CLASS(class_name, base_name, nullptr)

#define IMPLEMENT_DYNCREATE(class_name, base_name)                                                 \
    TARNEL_RUNTIME_CLASS(class_name, base_name, &class_name::CreateObject)                         \
    CObject* class_name::CreateObject() {                                                          \
        try {                                                                                      \
            return new class_name;                                                                 \
        } catch (const std::bad_alloc&) {                                                          \
            return nullptr;                                                                        \
        }                                                                                          \
    }

#define TARNEL_RUNTIME_CLASS(class_name, base_name, create)                                        \
    constinit CRuntimeClass class_name::class##class_name(                                         \
        {#class_name, sizeof(class_name), 0xFFFF, create, RUNTIME_CLASS(base_name)});              \
    CRuntimeClass* class_name::GetRuntimeClass() const {                                           \
        return &class##class_name;                                                                 \
    }
