// Key strings, and titles of windows, which become UTF-8 also where they are cut.

#include "desktop/KeyString.h"
#include "platform/base/virtual_keys.h"
#include "platform/desktop/window_text.h"
#include "platform/modules/utf8.h"

#include <cstdint>
#include <cstdlib>

namespace {

using Groups = std::vector<tarnel::KeyGroup>;

void expect(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool same(const tarnel::KeyGroup& a, const tarnel::KeyGroup& b) {
    return a.shift == b.shift && a.control == b.control && a.alt == b.alt && a.keys == b.keys;
}

/// Keys behind "~", which is a group of its own, are those of the rest alone.
void check_keys(const std::string& keys) {
    Groups alone, behind;
    const int result = tarnel::parse_key_string(keys.c_str(), alone);
    alone.insert(alone.begin(), {false, false, false, {VK_RETURN}});
    expect(result <= 0 && result >= tarnel::key_string_unopened_group);
    expect(tarnel::parse_key_string(('~' + keys).c_str(), behind) == result);
    expect(std::equal(alone.begin(), alone.end(), behind.begin(), behind.end(), same));
}

void check_title(const std::string& title, std::size_t size) {
    std::string text = tarnel::utf8_from_compound_text(title);
    std::erase_if(text, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
    const bool utf8 = title.find("%G") != title.npos || tarnel::text_prefix(text) == text.size();
    std::string cut(size, 'x');
    const int count = tarnel::copy_text(text, cut.data(), static_cast<int>(size));
    const std::string_view kept = std::string_view(text).substr(0, static_cast<std::size_t>(count));
    expect(utf8 && kept == std::string_view(cut.c_str(), kept.size()));
    expect(tarnel::text_prefix(text) < text.size() || tarnel::text_prefix(kept) == kept.size());
}

} // namespace

/// The first byte of the input says how long titles may be.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
        check_keys(text.substr(0, text.find('\0')));
        check_title(text, 1 + data[0] % 64U);
    }
    return 0;
}
