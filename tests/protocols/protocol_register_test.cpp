#include "protocols/MetrolecProtocol.h"
#include "protocols/PercevalProtocol.h"
#include "protocols/ProtocolRegister.h"
#include "tests/protocols/station.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

/// The names in the order of the list.
std::string names() {
    std::string all;
    for (const ProtocolRegister* node = ProtocolRegister::m_Root; node; node = node->next) {
        all += std::string(node->name) + ";";
    }
    return all;
}

constexpr const char* own_names = "PERCEVAL MICRON;PERCEVAL 1/100;METROLEC;";

TEST(ProtocolRegister, CreatesTheLibrarysProtocolsByName) {
    EXPECT_EQ(names(), own_names);
    for (const auto& [name, record] :
         {std::pair{"METROLEC", RUNTIME_CLASS(MPOProtocol)},
          {"PERCEVAL 1/100", RUNTIME_CLASS(PercevalProtocol)},
          {"PERCEVAL MICRON", RUNTIME_CLASS(PercevalMicronProtocol)}}) {
        const auto protocol = support::create(name);
        ASSERT_NE(protocol, nullptr) << name;
        EXPECT_EQ(protocol->GetRuntimeClass(), record);
        EXPECT_EQ(protocol->GetProtocolName(), name);
    }
    for (const CRuntimeClass* abstract :
         {RUNTIME_CLASS(_CMMProtocol), RUNTIME_CLASS(CMMProtocolRS232)}) {
        EXPECT_EQ(abstract->CreateObject(), nullptr);
    }
    EXPECT_STREQ(RUNTIME_CLASS(_CMMProtocol)->m_lpszClassName, "_CMMProtocol");
}

TEST(ProtocolRegister, UnlinksANodeWhereverItStands) {
    std::optional<ProtocolRegister> first(std::in_place, "first", RUNTIME_CLASS(MPOProtocol));
    std::optional<ProtocolRegister> middle(std::in_place, "middle", RUNTIME_CLASS(MPOProtocol));
    std::optional<ProtocolRegister> last(std::in_place, "last", RUNTIME_CLASS(MPOProtocol));
    middle.reset();
    EXPECT_EQ(names(), std::string("last;first;") + own_names);
    ProtocolRegister::m_Root = &*first; // so that one of them is no longer listed
    last.reset();
    EXPECT_EQ(names(), std::string("first;") + own_names);
    first.reset();
    EXPECT_EQ(names(), own_names);
}

class Unregistered final : public PercevalProtocol {
    DECLARE_DYNAMIC(Unregistered)
};

IMPLEMENT_DYNAMIC(Unregistered, PercevalProtocol)

TEST(ProtocolRegister, TakesNamesAndClassesTwice) {
    Unregistered protocol;
    EXPECT_EQ(protocol.GetProtocolName(), "Unregistered") << "not the name of its base";
    const ProtocolRegister same_name("METROLEC", RUNTIME_CLASS(PercevalProtocol));
    EXPECT_EQ(names(), std::string("METROLEC;") + own_names);
    const auto newer = support::create("METROLEC");
    EXPECT_EQ(newer->GetRuntimeClass(), RUNTIME_CLASS(PercevalProtocol));
    EXPECT_EQ(newer->GetProtocolName(), "METROLEC");
    EXPECT_EQ(MPOProtocol().GetProtocolName(), "METROLEC");
}

} // namespace
