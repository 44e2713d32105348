#include "platform/base/last_error.h"
#include "platform/companions/registry_key.h"
#include "tools/settings_store.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>

// The machine's settings, looked at with the right to read alone.

namespace {

constexpr std::size_t levels_of_a_place = 3;

bool has_failed(LONG error, DWORD harmless) {
    const auto code = static_cast<DWORD>(error);
    if (code != ERROR_SUCCESS && code != harmless) {
        fail(exit_setting_not_stored,
             fmt::format("The machine's settings cannot be read (error {}); see 'tarnel doctor'.",
                         code));
    }
    return code == harmless;
}

/// Null when it is missing.
HKEY open_key(HKEY parent, const std::string& path) {
    HKEY key = nullptr;
    has_failed(RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
    return key;
}

std::string kind_called(DWORD kind) {
    static constexpr std::pair<DWORD, const char*> names[] = {{REG_SZ, "text"},
                                                              {REG_EXPAND_SZ, "expandable text"},
                                                              {REG_BINARY, "binary"},
                                                              {REG_DWORD, "int"},
                                                              {REG_MULTI_SZ, "texts"}};
    for (const auto& [known, name] : names) {
        if (kind == known) {
            return name;
        }
    }
    return fmt::format("kind {}", kind);
}

std::string notation(DWORD kind, const std::string& bytes) {
    int number = 0;
    if (kind == REG_DWORD && bytes.size() == sizeof number) {
        std::memcpy(&number, bytes.data(), sizeof number);
        return std::to_string(number);
    }
    if (kind == REG_SZ || kind == REG_EXPAND_SZ) {
        return bytes.substr(0, bytes.find('\0'));
    }
    return fmt::format(
        "{:02x}", fmt::join(std::basic_string_view(
                                reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()),
                            ""));
}

std::optional<Setting> read(HKEY key, const std::string& section, const std::string& entry) {
    DWORD kind = 0;
    DWORD size = 0;
    std::string bytes;
    LONG error = 0;
    do { // somebody may store a longer one meanwhile
        bytes.resize(size);
        error = RegQueryValueExA(key, entry.c_str(), nullptr, &kind,
                                 reinterpret_cast<BYTE*>(bytes.data()), &size);
    } while (error == static_cast<LONG>(ERROR_MORE_DATA));
    if (has_failed(error, ERROR_FILE_NOT_FOUND)) {
        return {};
    }
    bytes.resize(size);
    return Setting{section, entry, kind_called(kind), notation(kind, bytes)};
}

/// All names that `enumerate` gives of `key`.
template <typename Enumerate>
std::vector<std::string> names_in(HKEY key, Enumerate enumerate) {
    std::vector<std::string> names;
    std::string name(256, '\0');
    for (;;) {
        auto length = static_cast<DWORD>(name.size());
        const LONG error = enumerate(key, static_cast<DWORD>(names.size()), name.data(), &length,
                                     nullptr, nullptr, nullptr, nullptr);
        if (error == static_cast<LONG>(ERROR_MORE_DATA)) {
            name.resize(2 * name.size());
        } else if (has_failed(error, ERROR_NO_MORE_ITEMS)) {
            return names;
        } else {
            names.push_back(name.substr(0, length));
        }
    }
}

void add_section(HKEY key, const std::string& section, std::vector<Setting>& all) {
    const CRegistryKey owner(key, 1);
    const std::size_t before = all.size();
    for (const std::string& entry : names_in(key, RegEnumValueA)) {
        if (const auto setting = read(key, section, entry)) {
            all.push_back(*setting);
        }
    }
    for (const std::string& name : names_in(key, RegEnumKeyExA)) {
        if (const HKEY below = open_key(key, name)) {
            add_section(below, section.empty() ? name : fmt::format("{}\\{}", section, name), all);
        }
    }
    if (all.size() == before && !section.empty()) {
        all.push_back({section, "", "", ""});
    }
}

class MachineSettings final : public SettingsStore {
  public:
    explicit MachineSettings(std::vector<std::string> levels) : levels_(std::move(levels)) {}

    std::optional<Setting> find(const std::string& section,
                                const std::string& entry) const override {
        check_levels();
        const HKEY key = open(section);
        const CRegistryKey owner(key, 1);
        return key ? read(key, section, entry) : std::nullopt;
    }

    std::vector<Setting> list(const std::string& section) const override {
        std::vector<Setting> all;
        if (const HKEY key = open(section)) {
            add_section(key, section, all);
        }
        return all;
    }

    LocalMachineRegistry writer() const override {
        check_levels();
        return {levels_[0].c_str(), levels_[1].c_str(), levels_[2].c_str()};
    }

    void fail_to_write() const override {
        HKEY software = nullptr;
        const LONG error = RegCreateKeyExA(HKEY_LOCAL_MACHINE, LocalMachineRegistry::m_szSOFTWARE,
                                           0, nullptr, REG_OPTION_NON_VOLATILE,
                                           KEY_READ | KEY_WRITE, nullptr, &software, nullptr);
        const CRegistryKey owner(software, 1);
        if (error == static_cast<LONG>(ERROR_ACCESS_DENIED)) {
            fail(exit_no_rights_to_settings,
                 "You may not change the machine's settings: run the command as root (sudo).");
        }
        fail(exit_setting_not_stored,
             "It could not be done: other programs keep the settings busy, or a section to be "
             "deleted has sections below it.");
    }

  private:
    void check_levels() const {
        if (levels_.size() != levels_of_a_place) {
            fail(exit_bad_setting_name,
                 "Say where: --machine COMPANY/PROFILE/LEVEL, or --ini FILE.");
        }
    }

    HKEY open(const std::string& section) const {
        return open_key(HKEY_LOCAL_MACHINE,
                        fmt::format("{}\\{}\\{}", LocalMachineRegistry::m_szSOFTWARE,
                                    fmt::join(levels_, "\\"), section));
    }

    const std::vector<std::string> levels_;
};

} // namespace

std::unique_ptr<SettingsStore> machine_settings(const std::string& place) {
    auto levels = CLI::detail::split(place, place.find('\\') == place.npos ? '/' : '\\');
    const bool empty = std::ranges::count(levels, "") > 0;
    if (levels.size() > levels_of_a_place || (empty && !place.empty())) {
        fail(exit_bad_setting_name, fmt::format("'{}' is not COMPANY/PROFILE/LEVEL.", place));
    }
    return std::make_unique<MachineSettings>(std::move(levels));
}
