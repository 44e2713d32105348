#include "desktop/KeyString.h"

#include "platform/base/virtual_keys.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

namespace tarnel {
namespace {

struct NamedKey {
    std::string_view name;
    UINT code;
};

constexpr auto named_keys = std::to_array<NamedKey>({
    {"LBUTTON", VK_LBUTTON},
    {"RBUTTON", VK_RBUTTON},
    {"CANCEL", VK_CANCEL},
    {"MBUTTON", VK_MBUTTON},
    {"BACK", VK_BACK},
    {"TAB", VK_TAB},
    {"CLEAR", VK_CLEAR},
    {"RETURN", VK_RETURN},
    {"ENTER", VK_RETURN},
    {"SHIFT", VK_SHIFT},
    {"CONTROL", VK_CONTROL},
    {"MENU", VK_MENU},
    {"PAUSE", VK_PAUSE},
    {"CAPITAL", VK_CAPITAL},
    {"ESCAPE", VK_ESCAPE},
    {"SPACE", VK_SPACE},
    {"PRIOR", VK_PRIOR},
    {"NEXT", VK_NEXT},
    {"END", VK_END},
    {"HOME", VK_HOME},
    {"LEFT", VK_LEFT},
    {"UP", VK_UP},
    {"RIGHT", VK_RIGHT},
    {"DOWN", VK_DOWN},
    {"SELECT", VK_SELECT},
    {"PRINT", VK_PRINT},
    {"EXECUTE", VK_EXECUTE},
    {"SNAPSHOT", VK_SNAPSHOT},
    {"INSERT", VK_INSERT},
    {"DELETE", VK_DELETE},
    {"DEL", VK_DELETE},
    {"HELP", VK_HELP},
    {"LWIN", VK_LWIN},
    {"RWIN", VK_RWIN},
    {"APPS", VK_APPS},
    {"NUMPAD0", VK_NUMPAD0},
    {"NUMPAD1", VK_NUMPAD0 + 1},
    {"NUMPAD2", VK_NUMPAD0 + 2},
    {"NUMPAD3", VK_NUMPAD0 + 3},
    {"NUMPAD4", VK_NUMPAD0 + 4},
    {"NUMPAD5", VK_NUMPAD0 + 5},
    {"NUMPAD6", VK_NUMPAD0 + 6},
    {"NUMPAD7", VK_NUMPAD0 + 7},
    {"NUMPAD8", VK_NUMPAD0 + 8},
    {"NUMPAD9", VK_NUMPAD0 + 9},
    {"MULTIPLY", VK_MULTIPLY},
    {"ADD", VK_ADD},
    {"SEPARATOR", VK_SEPARATOR},
    {"SUBTRACT", VK_SUBTRACT},
    {"DECIMAL", VK_DECIMAL},
    {"DIVIDE", VK_DIVIDE},
    {"F1", VK_F1},
    {"F2", VK_F1 + 1},
    {"F3", VK_F1 + 2},
    {"F4", VK_F1 + 3},
    {"F5", VK_F1 + 4},
    {"F6", VK_F1 + 5},
    {"F7", VK_F1 + 6},
    {"F8", VK_F1 + 7},
    {"F9", VK_F1 + 8},
    {"F10", VK_F1 + 9},
    {"F11", VK_F1 + 10},
    {"F12", VK_F1 + 11},
    {"F13", VK_F1 + 12},
    {"F14", VK_F1 + 13},
    {"F15", VK_F1 + 14},
    {"F16", VK_F1 + 15},
    {"F17", VK_F1 + 16},
    {"F18", VK_F1 + 17},
    {"F19", VK_F1 + 18},
    {"F20", VK_F1 + 19},
    {"F21", VK_F1 + 20},
    {"F22", VK_F1 + 21},
    {"F23", VK_F1 + 22},
    {"F24", VK_F1 + 23},
    {"NUMLOCK", VK_NUMLOCK},
    {"SCROLL", VK_SCROLL},
    {"+", VK_SHIFT},
    {"^", VK_CONTROL},
    {"%", VK_MENU},
});

/// 0 for none.
UINT key_called(std::string_view name) {
    const auto* const key = std::ranges::find(named_keys, name, &NamedKey::name);
    return key == named_keys.end() ? 0 : key->code;
}

class KeyStringParser {
  public:
    KeyStringParser(std::string_view text, std::vector<KeyGroup>& groups)
        : rest_(text), groups_(groups) {}

    int parse() {
        int result = 0;
        while (result == 0 && !rest_.empty()) {
            result = take(next());
        }
        return result;
    }

  private:
    char next() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    int take(char c) {
        switch (c) {
        case '+':
            group_.shift = true;
            return 0;
        case '^':
            group_.control = true;
            return 0;
        case '%':
            group_.alt = true;
            return 0;
        case '(':
            ++depth_;
            return 0;
        case ')':
            if (--depth_ < 0) {
                return key_string_unopened_group;
            }
            break;
        case '{':
            if (!take_name()) {
                return key_string_unclosed_brace;
            }
            break;
        case '~':
            group_.keys.push_back(VK_RETURN);
            break;
        default:
            group_.keys.push_back(static_cast<UINT>(int{static_cast<signed char>(c)}));
        }
        if (depth_ == 0) {
            groups_.push_back(std::exchange(group_, {}));
        }
        return 0;
    }

    /// A key whose name nobody knows adds nothing.
    bool take_name() {
        const std::size_t end = rest_.find('}');
        if (end == rest_.npos) {
            return false;
        }
        if (const UINT code = key_called(rest_.substr(0, end))) {
            group_.keys.push_back(code);
        }
        rest_.remove_prefix(end + 1);
        return true;
    }

    std::string_view rest_;
    int depth_ = 0;
    KeyGroup group_; ///< that is being collected
    std::vector<KeyGroup>& groups_;
};

} // namespace

int parse_key_string(LPCSTR text, std::vector<KeyGroup>& groups) {
    return KeyStringParser(text, groups).parse();
}

std::string key_name(UINT code) {
    const auto* const key = std::ranges::find(named_keys, code, &NamedKey::code);
    if (key != named_keys.end()) {
        return std::string(key->name);
    }
    if ((code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z')) {
        return {static_cast<char>(code)};
    }
    char digits[8];
    return "0x" + std::string(digits, std::to_chars(digits, std::end(digits), code, 16).ptr);
}

} // namespace tarnel
