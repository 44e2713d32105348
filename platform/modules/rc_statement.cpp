#include "platform/modules/rc_statement.h"

#include "platform/modules/utf8.h"

#include <algorithm>
#include <array>

namespace tarnel {

namespace {

void read_language_part(ScriptReader& reader) {
    const TokenKind kind = reader.peek().kind;
    if (kind != TokenKind::Word && kind != TokenKind::Number) {
        reader.fail_expected("a language name or number");
    }
    reader.take();
}

bool take_memory_option(ScriptReader& reader) {
    constexpr std::array<std::string_view, 9> options = {"PRELOAD",  "LOADONCALL",  "FIXED",
                                                         "MOVEABLE", "DISCARDABLE", "PURE",
                                                         "IMPURE",   "SHARED",      "NONSHARED"};
    return std::any_of(options.begin(), options.end(),
                       [&](std::string_view word) { return reader.take_if(word); });
}

} // namespace

std::string place_of(std::string_view script, const char* at) {
    const std::string_view before = script.substr(0, static_cast<std::size_t>(at - script.data()));
    const std::size_t line_start = before.rfind('\n') + 1; // 0 in the first line
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const auto column = 1 + count_characters(before.substr(line_start));
    return std::to_string(line) + ':' + std::to_string(column);
}

void read_language(ScriptReader& reader) {
    reader.expect("LANGUAGE");
    read_language_part(reader);
    reader.expect(",");
    read_language_part(reader);
}

void skip_options(ScriptReader& reader) {
    for (;;) {
        if (reader.peek().is("LANGUAGE")) {
            read_language(reader);
        } else if (reader.take_if("CHARACTERISTICS") || reader.take_if("VERSION")) {
            reader.expect_number("a number");
        } else if (!take_memory_option(reader)) {
            return;
        }
    }
}

void expect_begin(ScriptReader& reader) {
    if (!reader.take_if("{")) {
        reader.expect("BEGIN");
    }
}

bool take_end(ScriptReader& reader) {
    return reader.take_if("END") || reader.take_if("}");
}

WORD expect_id(ScriptReader& reader, std::string_view kind, std::string_view expected) {
    const char* const at = reader.peek().spelling.data();
    const DWORD id = reader.expect_number(expected);
    if (id > 0xFFFF) {
        throw ScriptFault{at, std::string(kind) + " identifier is out of range (0 to 65535)"};
    }
    return static_cast<WORD>(id);
}

void fail_known_id(std::string_view script, const char* at, std::string_view kind, WORD id,
                   std::size_t first) {
    throw ScriptFault{at, std::string(kind) + ' ' + std::to_string(id) + " stands already in " +
                              place_of(script, script.data() + first)};
}

} // namespace tarnel
