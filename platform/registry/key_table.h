#pragma once

#include "platform/base/types.h"
#include "platform/registry/hive.h"
#include "platform/registry/registry.h"

#include <optional>

namespace tarnel {

/// What a handle stands for.
struct OpenKey {
    Hive* hive;
    KeyId id;
    REGSAM access;
};

/// A number that no other key of the process has or had.
HKEY add_key(const OpenKey& key);

/// The open key or root key behind `handle`. A root key allows everything.
std::optional<OpenKey> find_open_key(HKEY handle);

/// False when `handle` is no open key.
bool remove_key(HKEY handle);

} // namespace tarnel
