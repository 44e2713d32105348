#pragma once

#include "core/MachineSettings.h"

#include <span>
#include <string>

/// What an application can keep as a setting, in the notation of `Setting`.
struct SettingType {
    const char* name;

    /// 0 when it was not stored. Fails with exit_bad_setting_name for what is no such value.
    int (*write)(LocalMachineRegistry& to, LPCSTR section, LPCSTR entry, const std::string& value);

    /// What is read from an INI file, where all are text.
    std::string (*read)(LocalMachineRegistry& from, LPCSTR section, LPCSTR entry);
};

std::span<const SettingType> setting_types();
