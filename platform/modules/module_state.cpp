#include "platform/modules/module_state.h"

#include "platform/modules/module_table.h"

#include <utility>

namespace {

thread_local constinit AFX_MODULE_STATE own_state{};
thread_local constinit AFX_MODULE_STATE* maintained_state = nullptr;

void set_if_null(HINSTANCE& handle) {
    if (!handle) {
        handle = tarnel::executable_module();
    }
}

} // namespace

AFX_MODULE_STATE* AfxGetModuleState() {
    AFX_MODULE_STATE* const state = maintained_state ? maintained_state : &own_state;
    set_if_null(state->m_hCurrentInstanceHandle);
    set_if_null(state->m_hCurrentResourceHandle);
    return state;
}

HINSTANCE AfxGetResourceHandle() {
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}

void AfxSetResourceHandle(HINSTANCE module) {
    AfxGetModuleState()->m_hCurrentResourceHandle = module;
}

AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* state)
    : previous_(std::exchange(maintained_state, state)) {}

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2() {
    maintained_state = previous_;
}
