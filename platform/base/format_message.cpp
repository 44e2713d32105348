#include "platform/base/string.h"

#include <string>
#include <string_view>

namespace {

struct Escape {
    std::string_view spelling;
    std::string_view meaning;
};

constexpr Escape escapes[] = {{"%%", "%"}, {"%n", "\n"}, {"%r", "\r"},
                              {"%.", "."}, {"%!", "!"},  {"% ", " "}};
constexpr std::string_view number_inserts[] = {"%1!d!", "%1!ld!", "%1!i!", "%1!u!", "%1"};
constexpr std::string_view end = "%0";

/// Takes what `rest` begins with, and appends what it stands for.
void take(std::string_view& rest, const std::string& insert, std::string& text) {
    for (const std::string_view spelling : number_inserts) {
        if (rest.starts_with(spelling)) {
            rest.remove_prefix(spelling.size());
            text += insert;
            return;
        }
    }
    for (const auto& [spelling, meaning] : escapes) {
        if (rest.starts_with(spelling)) {
            rest.remove_prefix(spelling.size());
            text += meaning;
            return;
        }
    }
    text += rest.front();
    rest.remove_prefix(1);
}

} // namespace

void CString::FormatMessage(LPCSTR format, LONG insert) {
    const std::string number = std::to_string(insert);
    std::string_view rest(format ? format : "");
    std::string text;
    while (!rest.empty() && !rest.starts_with(end)) {
        take(rest, number, text);
    }
    text_ = std::move(text);
}
