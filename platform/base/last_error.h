#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// The calling thread's last error. A failing call sets it; a successful one need not reset it.

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_BUSY = 170;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
constexpr DWORD ERROR_OPERATION_ABORTED = 995;
constexpr DWORD ERROR_IO_INCOMPLETE = 996;
constexpr DWORD ERROR_IO_PENDING = 997;
constexpr DWORD ERROR_REGISTRY_IO_FAILED = 1016;
constexpr DWORD ERROR_KEY_DELETED = 1018;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;
constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

TARNEL_PLATFORM_API DWORD GetLastError();
TARNEL_PLATFORM_API void SetLastError(DWORD error);
