#include "platform/modules/module.h"
#include "platform/modules/module_file.h"
#include "platform/modules/module_table.h"

#include <string>

namespace tarnel {

ModuleEntry::ModuleEntry(EntryPoint entry_point, std::string_view name, std::string_view script)
    : entry_point_(entry_point),
      module_(ModuleTable::instance().add_embedded(
          {std::string(name), file_of_code(reinterpret_cast<const void*>(entry_point))}, script)) {
    entry_point_(module_, DLL_PROCESS_ATTACH, nullptr);
}

ModuleEntry::~ModuleEntry() {
    entry_point_(module_, DLL_PROCESS_DETACH, nullptr);
    ModuleTable::instance().remove(module_);
}

} // namespace tarnel
