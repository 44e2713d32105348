#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// A lock that its thread may take again; one leave for each enter, on the same thread. Lives
/// where it was initialised and is not copied.
struct CRITICAL_SECTION {
    alignas(8) unsigned char storage[40];
};

static_assert(sizeof(CRITICAL_SECTION) == 40);

TARNEL_PLATFORM_API void InitializeCriticalSection(CRITICAL_SECTION* section);
TARNEL_PLATFORM_API void EnterCriticalSection(CRITICAL_SECTION* section);
TARNEL_PLATFORM_API void LeaveCriticalSection(CRITICAL_SECTION* section);
TARNEL_PLATFORM_API void DeleteCriticalSection(CRITICAL_SECTION* section);

/// The same as an object.
class CCriticalSection {
  public:
    CCriticalSection() { InitializeCriticalSection(&m_sect); }

    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    ~CCriticalSection() { DeleteCriticalSection(&m_sect); }

    BOOL Lock() {
        EnterCriticalSection(&m_sect);
        return TRUE;
    }

    BOOL Unlock() {
        LeaveCriticalSection(&m_sect);
        return TRUE;
    }

    CRITICAL_SECTION m_sect;
};

namespace tarnel {

/// Holds a section while it lives.
class SectionGuard {
  public:
    explicit SectionGuard(CRITICAL_SECTION& section) : section_(section) {
        EnterCriticalSection(&section_);
    }

    ~SectionGuard() { LeaveCriticalSection(&section_); }

    SectionGuard(const SectionGuard&) = delete;
    SectionGuard& operator=(const SectionGuard&) = delete;

  private:
    CRITICAL_SECTION& section_;
};

} // namespace tarnel
