#include "desktop/HotKeys.h"
#include "desktop/KeyString.h"
#include "platform/base/virtual_keys.h"
#include "platform/companions/registry_bag.h"
#include "platform/desktop/hot_key.h"
#include "platform/desktop/window_text.h"
#include "tests/support/temporary_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace {

TEST(HotKeys, AreTexts) {
    EXPECT_STREQ(CHotKey(0, 0, 7, 0).ToString(), "None");
    EXPECT_STRNE(CHotKey().ToString(), "None");
    EXPECT_STREQ(CHotKey(VK_F1 + 11, 0xF, 0, 1).ToString(), "CTRL + SHIFT + ALT + F12");
    EXPECT_STREQ(CHotKey('A', MOD_ALT | MOD_WIN, 0, 0).ToString(), "ALT + A");
    const WORD modifiers[][2] = {{1, 4}, {2, 2}, {4, 1}, {8, 8}, {3, 6}, {0, 0xF0}};
    for (const auto& [control, system] : modifiers) {
        EXPECT_EQ(TranslateModifier(system, TRANSLATE_MOD_TO_HOTKEYF), control);
        EXPECT_EQ(TranslateModifier(control, TRANSLATE_HOTKEYF_TO_MOD), control ? system : 0);
    }
}

TEST(HotKeys, AreListedSavedAndLoaded) {
    CHotKeys keys;
    for (const CHotKey& key : {CHotKey('A', 1, 1, 0), CHotKey('B', 2, 2, 1), CHotKey('A', 1, 3, 0),
                               CHotKey('A', 1, 4, 1)}) {
        keys.Add(key);
    }
    EXPECT_THROW(keys.HotKey(keys.Count()), std::out_of_range);
    EXPECT_THROW(keys.HotKey(-1), std::out_of_range);

    const support::TemporaryRegistry registry;
    HKEY key = nullptr;
    RegCreateKeyExA(HKEY_CURRENT_USER, "keys", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                    nullptr);
    IPropertyBag* const bag = tarnel::make_registry_bag(key);
    CHotKeys loaded;
    loaded.Add({'C', 1, 1, 1});
    EXPECT_EQ(loaded.Load(bag, nullptr), 0);
    EXPECT_EQ(loaded.Count(), 1) << "the bag has none";
    EXPECT_EQ(keys.Save(bag, 1, 1), 0);
    EXPECT_EQ(RegDeleteValueA(key, "HotKey[1].Modifiers"), ERROR_SUCCESS);
    EXPECT_EQ(loaded.Load(bag, nullptr), 0);
    EXPECT_EQ(loaded.Count(), 4);
    EXPECT_TRUE(loaded.HotKey(1) == CHotKey('B', 1, 1, 0)) << "the rest is the one before";
    EXPECT_TRUE(loaded.HotKey(3) == CHotKey('A', 1, 99, 1)) << "the id takes no part";
    bag->Release();
    EXPECT_LT(keys.Save(nullptr, 0, 0), 0);

    CHotKey removed('A', 1, 99, 0);
    keys.Remove(removed);
    EXPECT_EQ(keys.Count(), 2);
}

TEST(KeyStrings, BecomeGroupsOfKeys) {
    const struct {
        LPCSTR text;
        int result;
        LPCSTR plan; ///< a line for each group: what is held, and the keys
    } cases[] = {
        {"^S", 0, "C53 |"},
        {"+(AB)C", 0, "S41 42 |43 |"},
        {"{F5", -1, ""},
        {"A)", -2, "41 |"},
        {"+(AB", 0, ""},
        {"+{xyz}", 0, "S|"},
        {"+^%(A(B)){+}{}}", 0, "SCA41 42 |10 ||7d |"},
        {"{DEL}{F24}~\xE9", 0, "2e |87 |d |ffffffe9 |"},
    };

    for (const auto& [text, result, plan] : cases) {
        std::vector<tarnel::KeyGroup> groups;
        EXPECT_EQ(tarnel::parse_key_string(text, groups), result) << text;
        std::ostringstream seen;
        for (const auto& [shift, control, alt, keys] : groups) {
            seen << (shift ? "S" : "") << (control ? "C" : "") << (alt ? "A" : "") << std::hex;
            std::ranges::copy(keys, std::ostream_iterator<UINT>(seen, " "));
            seen << '|';
        }
        EXPECT_EQ(seen.str(), plan) << text;
    }
}

TEST(WindowTexts, BecomeUtf8AndAreCutBetweenCharacters) {
    EXPECT_EQ(tarnel::utf8_from_compound_text("a\x1B-L\xC0\x1B-A\xE4\x1B%G\xD0\x96\x1B%@x\x1B"),
              "a?äЖx");
    EXPECT_EQ(tarnel::utf8_from_compound_text("\x1B$(B!!\x1B(Bx"), "??x");
    char cut[4];
    EXPECT_EQ(tarnel::copy_text("éé", cut, 4), 2);
    EXPECT_STREQ(cut, "é");
}

} // namespace
