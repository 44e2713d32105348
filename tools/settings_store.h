#pragma once

#include "core/MachineSettings.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

constexpr int exit_bad_setting_name = 2;
constexpr int exit_no_rights_to_settings = 3;
constexpr int exit_not_set = 4;
constexpr int exit_setting_not_stored = 5;

struct Setting {
    std::string section;
    std::string entry; ///< empty for a value without a name
    std::string kind;  ///< empty: the section has no entries
    std::string value; ///< in its kind's notation: decimal, or two digits a byte
};

/// A place that keeps settings. To look at it makes nothing, and takes no right to write; what
/// cannot be read ends the tool.
class SettingsStore {
  public:
    virtual ~SettingsStore() = default;

    virtual std::optional<Setting> find(const std::string& section,
                                        const std::string& entry) const = 0;

    /// All of `section`, or with an empty one of all sections. Nothing: there is no such place.
    virtual std::vector<Setting> list(const std::string& section) const = 0;

    /// What applications read and write it with.
    virtual LocalMachineRegistry writer() const = 0;

    /// Ends the tool, and says why the last writing has failed.
    [[noreturn]] virtual void fail_to_write() const = 0;
};

/// The settings of the machine at "COMPANY/PROFILE/LEVEL", or with backslashes. Fewer levels can be
/// listed only: sections then begin with those that are missing.
std::unique_ptr<SettingsStore> machine_settings(const std::string& place);

/// Those of an INI file, found as any file.
std::unique_ptr<SettingsStore> ini_settings(const std::string& file);
