#include "platform/modules/module.h"
#include "platform/modules/module_state.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(ModuleState, AMaintainedStateIsCurrentUntilItsScopeEnds) {
    const HINSTANCE executable = GetModuleHandleA(nullptr);
    AFX_MODULE_STATE* const own = AfxGetModuleState();
    AFX_MODULE_STATE outer{};
    AFX_MODULE_STATE inner{};
    {
        const AFX_MAINTAIN_STATE2 outer_scope(&outer);
        EXPECT_EQ(AfxGetModuleState(), &outer);
        EXPECT_EQ(AfxGetResourceHandle(), executable) << "a state is never without handles";
        EXPECT_EQ(outer.m_hCurrentInstanceHandle, executable);
        {
            const AFX_MAINTAIN_STATE2 inner_scope(&inner);
            AfxSetResourceHandle(reinterpret_cast<HINSTANCE>(&inner));
            const AFX_MAINTAIN_STATE2 none(nullptr);
            EXPECT_EQ(AfxGetModuleState(), own);
        }
        EXPECT_EQ(AfxGetModuleState(), &outer);
        std::thread([&] { EXPECT_NE(AfxGetModuleState(), &outer); }).join();
    }
    EXPECT_EQ(AfxGetModuleState(), own);
    EXPECT_EQ(AfxGetResourceHandle(), executable);
    EXPECT_EQ(inner.m_hCurrentResourceHandle, reinterpret_cast<HINSTANCE>(&inner));
}

} // namespace
