#include "platform/modules/module_state.h"

#include "platform/modules/module_table.h"

AFX_MODULE_STATE* AfxGetModuleState() {
    static thread_local constinit AFX_MODULE_STATE state{};
    if (!state.m_hCurrentResourceHandle) {
        state = {tarnel::executable_module(), tarnel::executable_module()};
    }
    return &state;
}

HINSTANCE AfxGetResourceHandle() {
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}

void AfxSetResourceHandle(HINSTANCE module) {
    AfxGetModuleState()->m_hCurrentResourceHandle = module;
}
