#pragma once

#include "platform/base/export.h"
#include "platform/registry/registry.h"

#include <string>
#include <vector>

// How the hives are, for who wants to know it and not to change it.

namespace tarnel {

enum class HiveCondition {
    good,       ///< can be read and written
    absent,     ///< the first call that needs it makes it
    no_place,   ///< the environment names no folder for it
    not_made,   ///< there is none, and its folder cannot be made or written to
    read_only,  ///< by its rights, or those of its folder
    unreadable, ///< by its rights, or it is no hive of this version
    damaged,    ///< the first call that needs it sets it aside and makes a new one
    busy,       ///< another process has blocked it for a second
};

struct HiveReport {
    HiveCondition condition;
    std::string path;               ///< of its file; "" without a place
    std::vector<std::string> aside; ///< damaged files that were set aside before
};

/// Looks at the hive of `root`, HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, and changes nothing.
TARNEL_PLATFORM_API HiveReport examine_hive(HKEY root);

/// From now on this process makes no hive and sets none aside, and waits for one that another
/// process blocks a second only: what is missing or damaged reads as empty.
TARNEL_PLATFORM_API void keep_hives_as_they_are();

} // namespace tarnel
