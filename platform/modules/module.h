#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <string_view>

// Module handles: of the executable, of the shared libraries that have a tarnel::ModuleEntry, and
// of loaded resource libraries. A handle is never given twice, so a stale one names nothing.

constexpr DWORD DLL_PROCESS_DETACH = 0;
constexpr DWORD DLL_PROCESS_ATTACH = 1;

/// Loads the resource library at `path`, which is a resource script; a library that is loaded
/// already is counted once more. Null on failure, with the last error 2 (not found), 5 (access
/// denied), 1450 (the system lacks resources) or 1812 (no script, or a damaged one: the place of
/// the damage is reported).
TARNEL_PLATFORM_API HMODULE LoadLibraryA(LPCSTR path);

/// Takes back one LoadLibraryA; the last one unloads. 0 and the last error 126 when `library` is
/// no loaded resource library.
TARNEL_PLATFORM_API BOOL FreeLibrary(HMODULE library);

/// The executable's handle, for a null `name`. Other modules are not found by name: null and the
/// last error 126.
TARNEL_PLATFORM_API HMODULE GetModuleHandleA(LPCSTR name);

namespace tarnel {

/// Makes the shared library that it stands in a module. As the last static object of the library
/// it calls the entry point exactly when the library is loaded and unloaded: the constructor after
/// the module has its handle, the destructor before the module loses it. The entry point's result
/// is not examined.
class TARNEL_PLATFORM_API ModuleEntry {
  public:
    using EntryPoint = BOOL (*)(HINSTANCE module, DWORD reason, LPVOID reserved);

    /// `name` is the module's own; its file is the one that `entry_point` stands in. `script` holds
    /// the module's resources and lives as long as this object. It is parsed at the first look-up;
    /// a damaged one is then reported under `name` and holds nothing.
    ModuleEntry(EntryPoint entry_point, std::string_view name, std::string_view script);
    ~ModuleEntry();

    ModuleEntry(const ModuleEntry&) = delete;
    ModuleEntry& operator=(const ModuleEntry&) = delete;

  private:
    EntryPoint entry_point_;
    HINSTANCE module_;
};

} // namespace tarnel
