#include "platform/base/diagnostics.h"
#include "protocols/MetrolecProtocol.h"
#include "protocols/PercevalProtocol.h"
#include "protocols/ProtocolRegister.h"

#include <gtest/gtest.h>

#include <memory>
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

/// An object of the first class of that name, as an application makes it.
std::unique_ptr<_CMMProtocol> create(const std::string& name) {
    const ProtocolRegister* node = ProtocolRegister::m_Root;
    while (node->name != name) {
        node = node->next;
    }
    return std::unique_ptr<_CMMProtocol>(
        dynamic_cast<_CMMProtocol*>(node->runtime_class->CreateObject()));
}

constexpr const char* own_names = "PERCEVAL MICRON;PERCEVAL 1/100;METROLEC;";

TEST(ProtocolRegister, CreatesTheLibrarysProtocolsByName) {
    EXPECT_EQ(names(), own_names);
    for (const auto& [name, record] :
         {std::pair{"METROLEC", RUNTIME_CLASS(MPOProtocol)},
          {"PERCEVAL 1/100", RUNTIME_CLASS(PercevalProtocol)},
          {"PERCEVAL MICRON", RUNTIME_CLASS(PercevalMicronProtocol)}}) {
        const auto protocol = create(name);
        ASSERT_NE(protocol, nullptr) << name;
        EXPECT_EQ(protocol->GetRuntimeClass(), record);
        EXPECT_EQ(protocol->GetProtocolName(), name);
        EXPECT_TRUE(protocol->IsKindOf(RUNTIME_CLASS(CMMProtocolRS232)));
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
    last.reset();
    EXPECT_EQ(names(), std::string("first;") + own_names);

    ProtocolRegister* const listed = ProtocolRegister::m_Root;
    std::optional<ProtocolRegister> unlisted(std::in_place, "unlisted", RUNTIME_CLASS(MPOProtocol));
    ProtocolRegister::m_Root = listed;
    unlisted.reset();
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
    const auto newer = create("METROLEC");
    EXPECT_EQ(newer->GetRuntimeClass(), RUNTIME_CLASS(PercevalProtocol));
    EXPECT_EQ(newer->GetProtocolName(), "METROLEC");
    EXPECT_EQ(MPOProtocol().GetProtocolName(), "METROLEC");
}

TEST(ProtocolRegister, SaysEachChangeInPieces) {
    std::string pieces;
    tarnel::set_debug_sink(
        [](void* all, std::string_view piece) {
            *static_cast<std::string*>(all) += std::string(piece) + '|';
        },
        &pieces);
    { const ProtocolRegister node("new", RUNTIME_CLASS(MPOProtocol)); }
    tarnel::set_debug_sink(nullptr, nullptr);
    EXPECT_EQ(pieces, " Installing Protocol |new| Before protocol |PERCEVAL MICRON|\n|"
                      " Removing Protocol |new|\n|");
}

} // namespace
