#include "core/MachineSettings.h"

#include "core/NumberConversion.h"
#include "core/RegistryValues.h"
#include "platform/registry/ini_profile.h"

#include <cstring>
#include <initializer_list>
#include <string>

constinit const char LocalMachineRegistry::m_szSOFTWARE[] = "SOFTWARE";

namespace {

std::unique_ptr<char[]> copy_of(const char* text) {
    if (!text) {
        return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    auto copy = std::make_unique<char[]>(size);
    std::memcpy(copy.get(), text, size);
    return copy;
}

/// A key that closes itself; null when it could not be had.
class Key {
  public:
    explicit Key(HKEY key) : key_(key) {}

    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    ~Key() {
        if (key_) {
            RegCloseKey(key_);
        }
    }

    operator HKEY() const { return key_; }

  private:
    HKEY key_;
};

constexpr REGSAM read_write = KEY_READ | KEY_WRITE;

/// Null also without a parent or a name.
HKEY create_key(HKEY parent, const char* name) {
    HKEY key = nullptr;
    if (parent) {
        RegCreateKeyExA(parent, name, 0, nullptr, REG_OPTION_NON_VOLATILE, read_write, nullptr,
                        &key,
                        nullptr); // leaves null on failure
    }
    return key;
}

/// The key at the end of `levels` below the software, in one look-up; null also when a level is.
HKEY create_levels(std::initializer_list<const char*> levels) {
    std::string path = LocalMachineRegistry::m_szSOFTWARE; // which nobody makes: it is there
    for (const char* const level : levels) {
        if (!level) {
            return nullptr;
        }
        path.append("\\").append(level);
    }
    return create_key(HKEY_LOCAL_MACHINE, path.c_str());
}

std::string letters_of(const unsigned char* data, unsigned int size) {
    std::string text;
    for (const unsigned char* byte = data; byte != data + size; ++byte) {
        text += static_cast<char>('A' + (*byte & 0xF));
        text += static_cast<char>('A' + (*byte >> 4));
    }
    return text;
}

unsigned char byte_of(char low, char high) {
    return static_cast<unsigned char>((low - 'A') + 16 * (high - 'A'));
}

struct Block {
    std::unique_ptr<unsigned char[]> bytes; ///< null for none
    DWORD size = 0;
};

Block bytes_of(const CString& letters) {
    const char* letter = letters;
    const DWORD size = static_cast<DWORD>(letters.GetLength()) / 2;
    Block block{std::make_unique<unsigned char[]>(size), size};
    for (DWORD i = 0; i < size; ++i, letter += 2) {
        block.bytes[i] = byte_of(letter[0], letter[1]);
    }
    return block;
}

Block read_block(HKEY key, const char* entry) {
    Block block;
    if (RegQueryValueExA(key, entry, nullptr, nullptr, nullptr, &block.size)) {
        return {};
    }
    block.bytes = std::make_unique<unsigned char[]>(block.size);
    if (RegQueryValueExA(key, entry, nullptr, nullptr, block.bytes.get(), &block.size)) {
        return {};
    }
    return block;
}

} // namespace

LocalMachineRegistry::LocalMachineRegistry(const char* registry_key, const char* profile_name,
                                           const char* third_level)
    : m_pszRegistryKey(copy_of(registry_key)), m_pszProfileName(copy_of(profile_name)),
      m_pszThirdLevel(copy_of(third_level)) {}

LocalMachineRegistry::LocalMachineRegistry(const LocalMachineRegistry& other)
    : LocalMachineRegistry(other.m_pszRegistryKey.get(), other.m_pszProfileName.get(),
                           other.m_pszThirdLevel.get()) {}

LocalMachineRegistry& LocalMachineRegistry::operator=(const LocalMachineRegistry& other) {
    LocalMachineRegistry copy(other);
    m_pszRegistryKey.swap(copy.m_pszRegistryKey);
    m_pszProfileName.swap(copy.m_pszProfileName);
    m_pszThirdLevel.swap(copy.m_pszThirdLevel);
    return *this;
}

LocalMachineRegistry::~LocalMachineRegistry() = default;

HKEY LocalMachineRegistry::GetMainRegistryKey() {
    return create_levels({m_pszRegistryKey.get(), m_pszProfileName.get(), m_pszThirdLevel.get()});
}

HKEY LocalMachineRegistry::GetSectionKey(const char* section) {
    return create_levels(
        {m_pszRegistryKey.get(), m_pszProfileName.get(), m_pszThirdLevel.get(), section});
}

unsigned int LocalMachineRegistry::GetProfileIntA(const char* section, const char* entry,
                                                  int default_number) {
    if (!m_pszRegistryKey) {
        return ::GetPrivateProfileIntA(section, entry, default_number, m_pszProfileName.get());
    }
    const Key key(GetSectionKey(section));
    return GetRegistryValue(key, entry, default_number);
}

CString LocalMachineRegistry::GetProfileStringA(const char* section, const char* entry,
                                                const char* default_text) {
    if (m_pszRegistryKey) {
        const Key key(GetSectionKey(section));
        return GetRegistryValue(key, entry, default_text);
    }
    char text[4096];
    ::GetPrivateProfileStringA(section, entry, default_text, text, sizeof(text),
                               m_pszProfileName.get());
    return text;
}

double LocalMachineRegistry::GetProfileDouble(const char* section, const char* entry,
                                              double default_number) {
    char text[25];
    locale_independent::_gcvt(default_number, 16, text);
    return locale_independent::atof(GetProfileStringA(section, entry, text));
}

int LocalMachineRegistry::GetProfileBinary(const char* section, const char* entry,
                                           unsigned char** data, unsigned int* size) {
    Block block;
    if (m_pszRegistryKey) {
        const Key key(GetSectionKey(section));
        block = read_block(key, entry);
    } else if (const CString text = GetProfileStringA(section, entry, nullptr); !text.IsEmpty()) {
        block = bytes_of(text);
    }
    *size = block.size;
    *data = block.bytes.release();
    return *data != nullptr;
}

int LocalMachineRegistry::WriteProfileInt(const char* section, const char* entry, int value) {
    if (m_pszRegistryKey) {
        const Key key(GetSectionKey(section));
        return WriteRegistryValue(key, entry, value);
    }
    char text[12];
    locale_independent::wsprintfA(text, "%d", value);
    return WriteProfileStringA(section, entry, text);
}

int LocalMachineRegistry::WriteProfileStringA(const char* section, const char* entry,
                                              const char* value) {
    if (!m_pszRegistryKey) {
        return ::WritePrivateProfileStringA(section, entry, value, m_pszProfileName.get());
    }
    if (!entry) {
        return delete_section(section);
    }
    const Key key(GetSectionKey(section));
    return value ? WriteRegistryValue(key, entry, value)
                 : RegDeleteValueA(key, entry) == ERROR_SUCCESS;
}

int LocalMachineRegistry::delete_section(const char* section) {
    const Key main(GetMainRegistryKey());
    return main && RegDeleteKeyA(main, section) == ERROR_SUCCESS;
}

int LocalMachineRegistry::WriteProfileDouble(const char* section, const char* entry, double value) {
    char text[25];
    return WriteProfileStringA(section, entry, locale_independent::_gcvt(value, 10, text));
}

int LocalMachineRegistry::WriteProfileBinary(const char* section, const char* entry,
                                             unsigned char* data, unsigned int size) {
    if (!m_pszRegistryKey) {
        return WriteProfileStringA(section, entry, letters_of(data, size).c_str());
    }
    const Key key(GetSectionKey(section));
    return key && RegSetValueExA(key, entry, 0, REG_BINARY, data, size) == ERROR_SUCCESS;
}
