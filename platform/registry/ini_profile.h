#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// Settings in INI files: "[section]", "name=value", and comments after ";" at the start of a line.
//
// A file name that is no full path lies in the folder of the user's settings: TARNEL_REGISTRY_DIR,
// else $XDG_CONFIG_HOME/tarnel, else ~/.config/tarnel. Names of sections and keys compare without
// regard to the case of ASCII letters and lose the blanks around them; of two that are the same,
// the first counts. Texts are UTF-8 in a file without a byte-order mark too; a file that begins
// with the mark of UTF-16LE is read and written in that. All calls may be made from any thread.

/// Copies the value of `key` to `buffer`, with room for `size` characters, without the blanks and
/// one pair of quotes (" or ') around it; `default_text` (null: "") without the blanks at its end
/// when the file, the section or the key is missing. What is too long is cut. Returns the number
/// of characters before the closing zero.
///
/// A null `key` asks for the names of all keys of the section, a null `section` for those of all
/// sections: each with its zero, and one more zero at the end, which is not counted.
TARNEL_PLATFORM_API DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR default_text,
                                                   LPSTR buffer, DWORD size, LPCSTR file);

/// The number at the start of the value, decimal with an optional sign or hexadecimal after "0x",
/// in 32 bits; 0 when there is none, `default_number` when the value is missing. A negative number
/// comes in two's complement.
TARNEL_PLATFORM_API UINT GetPrivateProfileIntA(LPCSTR section, LPCSTR key, int default_number,
                                               LPCSTR file);

/// Stores `value` as it is given, in the place of the old one or at the end of the section, which
/// is made when missing, as the file is; not so a folder of the caller's. A null `value` deletes
/// the key, a null `key` the section; that there was none is no failure. What is not changed stays
/// byte by byte. Nonzero when the change is on the disk.
///
/// Zero with the last error: ERROR_INVALID_PARAMETER for a null `section` or `file`, and for what
/// could not be read again: a line end in a text, "]" in a section, "=" in a key, or a key that
/// begins as a section or a comment does. ERROR_BUSY when others keep the folder locked for 5
/// seconds. Otherwise what the file system says.
TARNEL_PLATFORM_API BOOL WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value,
                                                    LPCSTR file);
