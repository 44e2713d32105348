#include "platform/base/collections.h"
#include "platform/base/string.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>

namespace {

class Machine : public CObject {
    DECLARE_DYNAMIC(Machine)
};

class Probe : public Machine {
    DECLARE_DYNCREATE(Probe)
};

class Huge : public Machine {
    DECLARE_DYNCREATE(Huge)

    Huge() { throw std::bad_alloc(); }
};

class Plain : public Probe {};

IMPLEMENT_DYNAMIC(Machine, CObject)
IMPLEMENT_DYNCREATE(Probe, Machine)
IMPLEMENT_DYNCREATE(Huge, Machine)

// Looks at a record of another file before that file's own static objects are built.
const BOOL known_early = RUNTIME_CLASS(CPtrArray)->IsDerivedFrom(RUNTIME_CLASS(CObject));

TEST(Objects, KnowTheirClassAndItsBases) {
    const Plain plain;
    EXPECT_EQ(plain.GetRuntimeClass(), RUNTIME_CLASS(Probe));
    EXPECT_STREQ(plain.GetRuntimeClass()->m_lpszClassName, "Probe");
    EXPECT_EQ(Probe::GetThisClass()->m_wSchema, 0xFFFFU);
    for (const CRuntimeClass* base :
         {Probe::GetThisClass(), RUNTIME_CLASS(Machine), RUNTIME_CLASS(CObject)}) {
        EXPECT_TRUE(plain.IsKindOf(base)) << base->m_lpszClassName;
    }
    EXPECT_FALSE(plain.IsKindOf(RUNTIME_CLASS(CPtrArray)));
    EXPECT_FALSE(RUNTIME_CLASS(Machine)->IsDerivedFrom(RUNTIME_CLASS(Probe)));
    EXPECT_TRUE(known_early);
}

TEST(Objects, AreCreatedThroughTheRecordWhereItOffersThat) {
    const std::unique_ptr<CObject> probe(RUNTIME_CLASS(Probe)->CreateObject());
    ASSERT_NE(probe, nullptr);
    EXPECT_TRUE(probe->IsKindOf(RUNTIME_CLASS(Probe)));
    EXPECT_EQ(RUNTIME_CLASS(Machine)->CreateObject(), nullptr);
    EXPECT_EQ(RUNTIME_CLASS(Huge)->m_pfnCreateObject(), nullptr);
}

TEST(Text, IsFormattedFromItself) {
    CString text("COM1:");
    text.Format("%s %d,%d 100%% %s", text.GetString(), std::numeric_limits<int>::min(), 0, "");
    EXPECT_STREQ(text, "COM1: -2147483648,0 100% ");
}

} // namespace
