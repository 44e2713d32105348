#include "platform/modules/module.h"

#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/modules/module_table.h"
#include "platform/modules/script_file.h"

#include <filesystem>
#include <string>
#include <utility>

using namespace tarnel;

namespace {

HMODULE fail(DWORD error) {
    SetLastError(error);
    return nullptr;
}

HMODULE load_script(const std::string& path) {
    const ScriptFile file = read_script_file(path);
    if (file.error != ERROR_SUCCESS) {
        return fail(file.error);
    }
    auto parsed = parse_resource_script(file.text);
    if (const auto* error = std::get_if<ScriptError>(&parsed)) {
        report(report_line(path, *error));
        return fail(ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    return ModuleTable::instance().add_library(path, std::get<ResourceScript>(std::move(parsed)));
}

} // namespace

HMODULE LoadLibraryA(LPCSTR path) {
    if (!path) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    // One file has one path, wherever the working directory is by now; the file itself need not be
    // there any more. Where that cannot be told, opening it says why.
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
    const std::string unique = error ? path : canonical.string();
    const HMODULE loaded = ModuleTable::instance().add_reference(unique);
    return loaded ? loaded : load_script(unique);
}

BOOL FreeLibrary(HMODULE library) {
    if (ModuleTable::instance().release(library)) {
        return TRUE;
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return FALSE;
}

HMODULE GetModuleHandleA(LPCSTR name) {
    return name ? fail(ERROR_MOD_NOT_FOUND) : executable_module();
}
