#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

constexpr DWORD MEM_COMMIT = 0x1000;
constexpr DWORD MEM_RESERVE = 0x2000;
constexpr DWORD MEM_RELEASE = 0x8000;
constexpr DWORD PAGE_READWRITE = 0x04;

/// Whole pages of zeros for at least `size` bytes, or null with the last error. Only new memory
/// that is there at once can be had: a null `address`, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE.
TARNEL_PLATFORM_API LPVOID VirtualAlloc(LPVOID address, std::size_t size, DWORD type,
                                        DWORD protection);

/// Gives back what VirtualAlloc returned: `size` 0 and MEM_RELEASE. FALSE, with the last error, for
/// any other address.
TARNEL_PLATFORM_API BOOL VirtualFree(LPVOID address, std::size_t size, DWORD type);
