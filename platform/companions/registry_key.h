#pragma once

#include "platform/base/export.h"
#include "platform/base/string.h"
#include "platform/base/types.h"
#include "platform/registry/registry.h"

#include <concepts>

/// Typed values of one registry key. Reading a missing value gives the default and stores nothing;
/// so does reading a value of another kind, or from a null key. From any thread.
class TARNEL_PLATFORM_API CRegistryKey {
  public:
    /// Works on `key`, an open key; closes it at the end unless `close` is 0.
    CRegistryKey(HKEY key, int close) : key_(key), close_(close != 0) {}

    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;
    ~CRegistryKey();

    /// The text up to its first zero.
    CString GetValue(const char* name, const char* default_text) const;

    /// The 32-bit number.
    unsigned int GetValue(const char* name, unsigned int default_number) const;

    /// Stores a text with its terminating zero, a null one as "". Nonzero on success.
    BOOL WriteValue(const char* name, const char* text);

    /// Stores a 32-bit number; unsigned long has 32 bits in this interface. Nonzero on success.
    BOOL WriteValue(const char* name, DWORD number);

    // Numbers of every other type, so that a literal 0 is one too and no null pointer.
    template <std::integral Number>
    unsigned int GetValue(const char* name, Number default_number) const {
        return GetValue(name, static_cast<unsigned int>(default_number));
    }

    template <std::integral Number>
    BOOL WriteValue(const char* name, Number number) {
        return WriteValue(name, static_cast<DWORD>(number));
    }

  private:
    HKEY key_;
    bool close_;
};
