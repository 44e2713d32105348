#include "desktop/SendKeys.h"

#include "desktop/KeyString.h"
#include "platform/base/virtual_keys.h"
#include "platform/desktop/key_input.h"

namespace {

INPUT key_event(UINT code, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = static_cast<WORD>(code);
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyA(code, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    return input;
}

void send_modifiers(const tarnel::KeyGroup& group, DWORD flags) {
    const struct {
        bool held;
        UINT code;
    } modifiers[] = {{group.shift, VK_SHIFT}, {group.control, VK_CONTROL}, {group.alt, VK_MENU}};

    for (const auto& [held, code] : modifiers) {
        if (held) {
            const INPUT event = key_event(code, flags);
            SendInput(1, &event, sizeof event);
        }
    }
}

void send(const tarnel::KeyGroup& group) {
    send_modifiers(group, 0);
    for (const UINT key : group.keys) {
        SendKey(key);
    }
    send_modifiers(group, KEYEVENTF_KEYUP);
}

} // namespace

void SendKey(UINT virtual_key_code) {
    const INPUT events[] = {key_event(virtual_key_code, 0),
                            key_event(virtual_key_code, KEYEVENTF_KEYUP)};
    SendInput(2, events, sizeof *events);
}

int SendKeyString(LPCSTR keys) {
    std::vector<tarnel::KeyGroup> groups;
    const int result = tarnel::parse_key_string(keys, groups);
    for (const tarnel::KeyGroup& group : groups) {
        send(group);
    }
    return result;
}
