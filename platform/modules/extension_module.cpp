#include "platform/modules/extension_module.h"

#include "platform/modules/module_table.h"

using tarnel::ModuleTable;

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module) {
    state = {TRUE, module, module};
    return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all) {
    ModuleTable::instance().remove_extensions(state.hModule, all != FALSE);
    state.bInitialized = FALSE;
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL system)
    : m_hModule(state.hModule), m_hResource(state.hResource), m_bSystem(system) {
    ModuleTable::instance().add_extension(this);
}
