#pragma once

#include "core/export.h"
#include "platform/base/string.h"
#include "platform/registry/registry.h"

// One value of an open key, which stays the caller's. Reading a missing value stores the default,
// so that what has been read once is there afterwards. From a null key come defaults, and 0 from
// writing; writing gives nonzero on success. From any thread.

/// The bytes of the value up to their first zero, of whatever kind it is. A null default is "".
TARNEL_API CString GetRegistryValue(HKEY key, const char* name, const char* default_text);

/// The up to 4 bytes of the value, of whatever kind it is; a longer one is replaced by the default.
TARNEL_API unsigned int GetRegistryValue(HKEY key, const char* name, int default_number);

/// The number that a text begins with, or the 8 bytes of a binary value; a binary value of another
/// size is replaced by the default. A missing one is stored with six decimals.
TARNEL_API double GetRegistryValue(HKEY key, const char* name, double default_number);

/// Stores a text with its closing zero, a null one as "".
TARNEL_API int WriteRegistryValue(HKEY key, const char* name, const char* text);

/// Stores a 32-bit number.
TARNEL_API int WriteRegistryValue(HKEY key, const char* name, int value);

/// Stores a text of 16 significant digits, whatever the locale, in the place of a value of any
/// kind.
TARNEL_API int WriteRegistryValue(HKEY key, const char* name, double value);
