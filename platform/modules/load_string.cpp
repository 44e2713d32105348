#include "platform/base/last_error.h"
#include "platform/base/string.h"
#include "platform/modules/module_state.h"
#include "platform/modules/module_table.h"

#include <optional>
#include <string>
#include <utility>

using tarnel::ModuleTable;
using tarnel::Search;

namespace {

BOOL store(std::string& target, std::optional<std::string> found) {
    if (!found) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return FALSE;
    }
    target = std::move(*found);
    return TRUE;
}

} // namespace

BOOL CString::LoadString(UINT id) {
    const HINSTANCE current = AfxGetResourceHandle();
    return store(text_, ModuleTable::instance().find_string(current, id, Search::WithExtensions));
}

BOOL CString::LoadString(HINSTANCE module, UINT id) {
    return store(text_, ModuleTable::instance().find_string(module, id, Search::ThisModule));
}
