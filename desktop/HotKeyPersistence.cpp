#include "desktop/HotKeys.h"

#include <string>

// Hot keys in a property bag: "HotKeyCount", and four values each, "HotKey[0].Id" and the like.

namespace {

std::u16string name_of(int index, LPCSTR field) {
    CString name;
    name.Format("HotKey[%d].%s", index, field);
    const LPCSTR ascii = name;
    return {ascii, ascii + name.GetLength()};
}

} // namespace

LONG CHotKeys::Save(IPropertyBag* bag, int, int) {
    LONG result = SaveParameter(bag, OLESTR("HotKeyCount"), Count());
    for (int i = 0; i < Count() && result >= 0; ++i) {
        result = SaveHotKey(i, m_hotKeys[static_cast<std::size_t>(i)], bag);
    }
    return result < 0 ? result : 0;
}

LONG CHotKeys::SaveHotKey(int index, const CHotKey& hot_key, IPropertyBag* bag) {
    const struct {
        LPCSTR name;
        int value;
    } fields[] = {
        {"VirtualKeyCode", hot_key.VirtualKeyCode()},
        {"Modifiers", hot_key.Modifiers()},
        {"Id", hot_key.Id()},
        {"Enabled", hot_key.Enabled()},
    };

    for (const auto& [name, value] : fields) {
        const LONG result = SaveParameter(bag, name_of(index, name).c_str(), value);
        if (result < 0) {
            return result;
        }
    }
    return 0;
}

LONG CHotKeys::Load(IPropertyBag* bag, IErrorLog* error_log) {
    int count = 0;
    if (ReadParameter(bag, error_log, OLESTR("HotKeyCount"), count) < 0 || count < 1) {
        return 0;
    }
    const bool was_registered = m_bRegistered != 0;
    Unregister();
    m_hotKeys.clear();
    CHotKey record; // keeps what one hot key lacks from the one before
    for (int i = 0; i < count; ++i) {
        LoadHotKey(i, record, bag, error_log);
        m_hotKeys.push_back(record);
    }
    if (was_registered) {
        Register();
    }
    return 0;
}

LONG CHotKeys::LoadHotKey(int index, CHotKey& hot_key, IPropertyBag* bag, IErrorLog* error_log) {
    const struct {
        LPCSTR name;
        void (*store)(CHotKey& hot_key, int value);
    } fields[] = {
        {"VirtualKeyCode", [](CHotKey& h, int v) { h.VirtualKeyCode(static_cast<WORD>(v)); }},
        {"Modifiers", [](CHotKey& h, int v) { h.Modifiers(static_cast<WORD>(v)); }},
        {"Id", [](CHotKey& h, int v) { h.Id(v); }},
        {"Enabled", [](CHotKey& h, int v) { h.Enabled(static_cast<WORD>(v)); }},
    };

    for (const auto& [name, store] : fields) {
        int value = 0;
        const LONG result = ReadParameter(bag, error_log, name_of(index, name).c_str(), value);
        if (result < 0) {
            return result;
        }
        store(hot_key, value);
    }
    return 0;
}
