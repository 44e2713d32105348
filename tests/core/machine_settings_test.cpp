#include "core/MachineSettings.h"
#include "core/RegistryValues.h"
#include "platform/companions/registry_bag.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_registry.h"

#include <fstream>

namespace {

using namespace std::string_literals;

/// "kind:bytes", or "" for a missing value.
std::string stored(HKEY key, const char* name) {
    DWORD type = 0;
    DWORD size = 99;
    std::string bytes(size, '\0');
    return RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size)
               ? ""
               : std::to_string(type) + ":" + bytes.substr(0, size);
}

void set(HKEY key, const char* name, DWORD type, const std::string& bytes) {
    RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                   static_cast<DWORD>(bytes.size()));
}

std::string read_block(LocalMachineRegistry& settings, const char* entry) {
    auto* data = reinterpret_cast<unsigned char*>(&settings);
    unsigned int size = 1;
    const int found = settings.GetProfileBinary("S", entry, &data, &size);
    const std::unique_ptr<unsigned char[]> block(data);
    EXPECT_EQ(found, block ? 1 : 0);
    return block ? std::string(data, data + size) : "none";
}

void expect_typed_values(LocalMachineRegistry settings) {
    unsigned char bytes[] = {0x00, 0xFF, 0x5A};
    EXPECT_TRUE(settings.WriteProfileInt("S", "int", -5));
    EXPECT_TRUE(settings.WriteProfileStringA("S", "text", "COM1"));
    EXPECT_TRUE(settings.WriteProfileDouble("S", "double", 1.0 / 3));
    EXPECT_TRUE(settings.WriteProfileBinary("S", "block", bytes, 3));
    const LocalMachineRegistry other("x", "y", "z");
    LocalMachineRegistry copy(other);
    copy = settings;
    EXPECT_EQ(static_cast<int>(copy.GetProfileIntA("S", "int", 1)), -5);
    EXPECT_EQ(copy.GetProfileStringA("S", "text", "no"), "COM1");
    EXPECT_EQ(copy.GetProfileDouble("S", "double", 1), 0.3333333333);
    EXPECT_EQ(read_block(copy, "block"), "\0\xFF\x5A"s);
    EXPECT_EQ(copy.GetProfileDouble("S", "missing", -1e-5), -1e-5);

    EXPECT_TRUE(copy.WriteProfileStringA("S", "text", nullptr));
    EXPECT_EQ(copy.GetProfileStringA("S", "text", nullptr), "");
    EXPECT_TRUE(copy.WriteProfileStringA("S", nullptr, nullptr));
    EXPECT_EQ(copy.GetProfileIntA("S", "int", 7), 7U);
    EXPECT_EQ(read_block(copy, "block"), "none");
}

TEST(MachineSettings, AreTheSameInTheRegistryAndInAFile) {
    const support::TemporaryRegistry registry;
    expect_typed_values({"Maker", "Tool", "1.0"});
    const auto file = registry.folder / "tool.ini";
    LocalMachineRegistry settings(nullptr, "tool.ini", nullptr);
    expect_typed_values(settings);
    EXPECT_FALSE(std::filesystem::exists(file) && std::filesystem::file_size(file));
    std::ofstream(file) << "[S]\nblock=AAPPKFX\nlong=" << std::string(5000, 'P');
    EXPECT_EQ(read_block(settings, "block"), "\0\xFF\x5A"s);
    EXPECT_EQ(read_block(settings, "long"), std::string(2047, '\xFF'));
}

TEST(MachineSettings, StoreDefaultsInTheRegistryAndTakeEveryKind) {
    const support::TemporaryRegistry registry;
    LocalMachineRegistry settings("Maker", "Tool", "1.0");
    const HKEY key = settings.GetSectionKey("S");
    set(key, "long", REG_BINARY, "12345");
    set(key, "eight", REG_BINARY, "\0\0\0\0\0\0\xF8\x3F"s);
    set(key, "seven", REG_BINARY, "1234567");
    set(key, "kind", REG_DWORD, "1234");
    EXPECT_EQ(settings.GetProfileIntA("S", "int", 3) + settings.GetProfileIntA("S", "long", 4), 7U);
    EXPECT_EQ(settings.GetProfileStringA("S", "text", "COM1"), "COM1");
    EXPECT_EQ(settings.GetProfileStringA("S", "kind", ""), "1234"); // no zero at its end
    EXPECT_EQ(settings.GetProfileDouble("S", "double", 100), 100);
    EXPECT_EQ(GetRegistryValue(key, "six", 1.5) + GetRegistryValue(key, "eight", 0.0), 3);
    EXPECT_EQ(GetRegistryValue(key, "seven", 2e20), 2e20);
    EXPECT_TRUE(WriteRegistryValue(key, "kind", 1.0 / 3));
    const std::pair<const char*, std::string> expected[] = {{"int", "4:\3\0\0\0"s},
                                                            {"long", "4:\4\0\0\0"s},
                                                            {"text", "1:COM1\0"s},
                                                            {"double", "1:100.\0"s},
                                                            {"six", "1:1.500000\0"s},
                                                            {"seven", "1:2.e+020\0"s},
                                                            {"kind", "1:0.3333333333333333\0"s},
                                                            {"missing", ""}};
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(stored(key, name), value) << name;
    }
    EXPECT_EQ(GetRegistryValue(nullptr, "x", 5) + GetRegistryValue(nullptr, "x", 0.5), 5.5);
    EXPECT_FALSE(WriteRegistryValue(nullptr, "x", 5) || WriteRegistryValue(nullptr, "x", "text"));
    RegCloseKey(key);
    tarnel::close_registry();

    std::filesystem::permissions(registry.folder / "machine.db", std::filesystem::perms(0444));
    support::as_nobody([&] {
        EXPECT_EQ(settings.GetProfileIntA("S", "int", 9), 9U);
        EXPECT_EQ(settings.GetProfileStringA("S", "text", "none"), "none");
        EXPECT_EQ(read_block(settings, "eight"), "none");
        EXPECT_FALSE(settings.WriteProfileInt("S", "int", 4) ||
                     settings.WriteProfileStringA("S", nullptr, nullptr));
    });
}

TEST(PropertyBag, KeepsNumbersInAKey) {
    const support::TemporaryRegistry registry;
    HKEY key = nullptr;
    RegCreateKeyExA(HKEY_CURRENT_USER, "Bag", 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &key,
                    nullptr);
    set(key, "text", REG_SZ, "1234");
    IPropertyBag* const bag = tarnel::make_registry_bag(key);
    int value = 1;
    EXPECT_EQ(ReadParameter(bag, nullptr, OLESTR("H[0].\u00E9"), value), E_INVALIDARG);
    EXPECT_EQ(ReadParameter(bag, nullptr, OLESTR("text"), value), E_FAIL);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(SaveParameter(bag, OLESTR("H[0].\u00E9"), -2), S_OK);
    EXPECT_EQ(stored(key, "h[0].\xC3\xA9"), "4:\xFE\xFF\xFF\xFF");
    EXPECT_EQ(ReadParameter(bag, nullptr, OLESTR("H[0].\u00E9"), value), S_OK);
    EXPECT_EQ(value, -2);
    EXPECT_EQ(bag->Release(), 0U);
    EXPECT_EQ(RegCloseKey(key), 6); // was the bag's
}

} // namespace
