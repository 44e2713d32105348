#include "platform/modules/dialog_template.h"

#include "platform/modules/module_state.h"
#include "platform/modules/module_table.h"

namespace tarnel {

std::shared_ptr<const DialogTemplate> find_dialog(UINT id) {
    return ModuleTable::instance().find_dialog(AfxGetResourceHandle(), id, Search::WithExtensions);
}

} // namespace tarnel
