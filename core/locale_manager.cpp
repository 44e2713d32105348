#include "core/locale_manager.h"

#include "core/load_order.h"

lmLocaleManagerMFC locale_manager TARNEL_LOAD_PLACE(load_locale_manager);

HINSTANCE lmLocaleManagerMFC::get_resource_handle() {
    return attached_module();
}
