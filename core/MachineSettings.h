#pragma once

#include "core/export.h"
#include "platform/base/string.h"
#include "platform/registry/registry.h"

#include <memory>

/// Settings of the machine, typed, in sections: keys below
/// `HKEY_LOCAL_MACHINE\SOFTWARE\<registry key>\<profile name>\<third level>`, or without a registry
/// key the sections of the INI file `<profile name>`.
///
/// Reading a missing value from the registry stores the default. Who may not write in the machine's
/// registry gets no key: defaults, and 0 from writing. Writing gives nonzero on success. A null
/// `entry` written deletes the section (in the registry, unless there are keys below it), a null
/// `value` the entry. No key stays open between calls; any thread may make them.
class TARNEL_API LocalMachineRegistry {
  public:
    /// Keeps copies of the texts; each may be null.
    LocalMachineRegistry(const char* registry_key, const char* profile_name,
                         const char* third_level);

    /// A copy has copies of the texts.
    LocalMachineRegistry(const LocalMachineRegistry& other);
    LocalMachineRegistry& operator=(const LocalMachineRegistry& other);

    ~LocalMachineRegistry();

    /// The section's key, made when missing, with read and write access; the caller closes it. Null
    /// when it cannot be had.
    HKEY GetSectionKey(const char* section);

    unsigned int GetProfileIntA(const char* section, const char* entry, int default_number);

    /// From an INI file up to 4095 characters. A null default is "".
    CString GetProfileStringA(const char* section, const char* entry, const char* default_text);

    /// The number that a text begins with, whatever the locale.
    double GetProfileDouble(const char* section, const char* entry, double default_number);

    /// 1 with a new array in `*data` that the caller deletes (delete[]) and its size, else 0 and
    /// null. From an INI file up to 2047 bytes.
    int GetProfileBinary(const char* section, const char* entry, unsigned char** data,
                         unsigned int* size);

    int WriteProfileInt(const char* section, const char* entry, int value);
    int WriteProfileStringA(const char* section, const char* entry, const char* value);

    /// With 10 significant digits.
    int WriteProfileDouble(const char* section, const char* entry, double value);

    /// In an INI file as text: two letters a byte, A for 0 to P for 15, the lower half first.
    int WriteProfileBinary(const char* section, const char* entry, unsigned char* data,
                           unsigned int size);

    /// "SOFTWARE"
    static const char m_szSOFTWARE[];

  private:
    HKEY GetMainRegistryKey();
    int delete_section(const char* section);

    std::unique_ptr<char[]> m_pszRegistryKey; ///< null: an INI file
    std::unique_ptr<char[]> m_pszProfileName;
    std::unique_ptr<char[]> m_pszThirdLevel;
};
