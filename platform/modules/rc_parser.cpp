#include "platform/modules/rc_parser.h"

#include "platform/modules/rc_reader.h"
#include "platform/modules/utf8.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarnel {

namespace {

std::string place_of(std::string_view script, const char* at) {
    const std::string_view before = script.substr(0, static_cast<std::size_t>(at - script.data()));
    const std::size_t line_start = before.rfind('\n') + 1; // 0 in the first line
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const auto column = 1 + count_characters(before.substr(line_start));
    return std::to_string(line) + ':' + std::to_string(column);
}

void read_directive(ScriptReader& reader, ResourceScript&) {
    const char* const directive = reader.peek().spelling.data();
    reader.expect("#");
    if (!reader.take_if("pragma")) {
        throw ScriptFault{directive, "only the directive #pragma code_page(65001) is supported"};
    }
    reader.expect("code_page");
    reader.expect("(");
    const char* const page = reader.peek().spelling.data();
    if (reader.expect_number("the code page 65001") != 65001) {
        throw ScriptFault{page, "code page is not supported, only 65001 (UTF-8)"};
    }
    reader.expect(")");
}

void read_language_part(ScriptReader& reader) {
    const TokenKind kind = reader.peek().kind;
    if (kind != TokenKind::Word && kind != TokenKind::Number) {
        reader.fail_expected("a language name or number");
    }
    reader.take();
}

void read_language(ScriptReader& reader, ResourceScript&) {
    reader.expect("LANGUAGE");
    read_language_part(reader);
    reader.expect(",");
    read_language_part(reader);
}

/// What may stand between STRINGTABLE and its body says nothing to this layer.
void skip_table_options(ScriptReader& reader, ResourceScript& script) {
    constexpr std::array<std::string_view, 9> memory = {"PRELOAD",  "LOADONCALL",  "FIXED",
                                                        "MOVEABLE", "DISCARDABLE", "PURE",
                                                        "IMPURE",   "SHARED",      "NONSHARED"};
    for (;;) {
        if (reader.peek().is("LANGUAGE")) {
            read_language(reader, script);
        } else if (reader.take_if("CHARACTERISTICS") || reader.take_if("VERSION")) {
            reader.expect_number("a number");
        } else if (!std::any_of(memory.begin(), memory.end(),
                                [&](std::string_view word) { return reader.take_if(word); })) {
            return;
        }
    }
}

void read_string(ScriptReader& reader, ResourceScript& script) {
    const char* const at = reader.peek().spelling.data();
    const DWORD id = reader.expect_number("a string identifier or END");
    if (id > 0xFFFF) {
        throw ScriptFault{at, "string identifier is out of range (0 to 65535)"};
    }
    reader.take_if(",");
    StringEntry entry{reader.expect_text(), static_cast<std::size_t>(at - reader.script().data())};
    const auto [place, inserted] =
        script.strings.try_emplace(static_cast<WORD>(id), std::move(entry));
    if (!inserted) {
        const char* const first = reader.script().data() + place->second.offset;
        throw ScriptFault{at, "string " + std::to_string(id) + " stands already in " +
                                  place_of(reader.script(), first)};
    }
}

void read_string_table(ScriptReader& reader, ResourceScript& script) {
    reader.expect("STRINGTABLE");
    skip_table_options(reader, script);
    if (!reader.take_if("{")) {
        reader.expect("BEGIN");
    }
    while (!reader.take_if("END") && !reader.take_if("}")) {
        read_string(reader, script);
    }
}

struct Statement {
    std::string_view keyword;
    void (*read)(ScriptReader&, ResourceScript&);
};

constexpr std::array<Statement, 3> statements = {
    {{"#", read_directive}, {"LANGUAGE", read_language}, {"STRINGTABLE", read_string_table}}};

/// A statement is known by its keyword, which stands first or behind a number; the statement's
/// own reader finds everything still to be taken.
void read_statement(ScriptReader& reader, ResourceScript& script) {
    ScriptReader ahead = reader;
    if (ahead.peek().kind == TokenKind::Number) {
        ahead.take();
    }
    const auto statement =
        std::find_if(statements.begin(), statements.end(),
                     [&](const Statement& known) { return ahead.peek().is(known.keyword); });
    if (statement == statements.end()) {
        ahead.fail_expected("a known statement");
    }
    statement->read(reader, script);
}

ResourceScript read_script(std::string_view text) {
    if (text.size() > longest_script) {
        throw ScriptFault{text.data(), "script is longer than 16 MiB"};
    }
    const std::size_t valid = text_prefix(text);
    if (valid < text.size()) {
        throw ScriptFault{text.data() + valid, "this is no text in UTF-8"};
    }
    ResourceScript script;
    ScriptReader reader(text);
    while (reader.peek().kind != TokenKind::End) {
        read_statement(reader, script);
    }
    return script;
}

} // namespace

std::string report_line(const std::string& name, const ScriptError& error) {
    return name + ':' + error.place + ": " + error.what;
}

std::variant<ResourceScript, ScriptError> parse_resource_script(std::string_view script) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (script.starts_with(byte_order_mark)) {
        script.remove_prefix(byte_order_mark.size());
    }
    try {
        return read_script(script);
    } catch (const ScriptFault& fault) {
        return ScriptError{place_of(script, fault.at), fault.what};
    }
}

} // namespace tarnel
