#include "core/locale_manager.h"

#include "core/entry_point.h"
#include "core/library_language.h"
#include "core/load_order.h"
#include "platform/modules/module.h"

#include <utility>

namespace tarnel {

lmLocaleManagerMFC locale_manager TARNEL_LOAD_PLACE(load_locale_manager);

constinit lmResourceManager* const resource_manager = &locale_manager;

LanguageChoice library_language() {
    return language_choice(library_module());
}

} // namespace tarnel

lmLocaleManagerMFC::~lmLocaleManagerMFC() {
    free_resource_module();
}

void lmLocaleManagerMFC::reload_resource_module() {
    std::string found;
    if (!find_resource_dll(attached_module(), resource_name_, found)) {
        free_resource_module();
        resource_path_.clear();
    } else if (found != resource_path_) {
        free_resource_module();
        resource_module_ = lm_load_library(found.c_str());
        resource_path_ = std::move(found);
    }
}

HINSTANCE lmLocaleManagerMFC::get_resource_handle() {
    return resource_module_ ? resource_module_ : attached_module();
}

void lmLocaleManagerMFC::free_resource_module() {
    if (resource_module_) {
        FreeLibrary(std::exchange(resource_module_, nullptr));
    }
}
