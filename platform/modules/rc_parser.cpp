#include "platform/modules/rc_parser.h"

#include "platform/modules/rc_dialog.h"
#include "platform/modules/rc_reader.h"
#include "platform/modules/rc_statement.h"
#include "platform/modules/utf8.h"

#include <algorithm>
#include <array>

namespace tarnel {

namespace {

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

void read_language_statement(ScriptReader& reader, ResourceScript&) {
    read_language(reader);
}

void read_string(ScriptReader& reader, ResourceScript& script) {
    const std::size_t offset = reader.offset();
    const WORD id = expect_new_id(reader, script.strings, "string", "a string identifier or END");
    reader.take_if(",");
    script.strings.emplace(id, StringEntry{reader.expect_text(), offset});
}

void read_string_table(ScriptReader& reader, ResourceScript& script) {
    reader.expect("STRINGTABLE");
    skip_options(reader);
    expect_begin(reader);
    while (!take_end(reader)) {
        read_string(reader, script);
    }
}

struct Statement {
    std::string_view keyword;
    void (*read)(ScriptReader&, ResourceScript&);
};

constexpr std::array<Statement, 5> statements = {{{"#", read_directive},
                                                  {"LANGUAGE", read_language_statement},
                                                  {"STRINGTABLE", read_string_table},
                                                  {"DIALOG", read_dialog},
                                                  {"DIALOGEX", read_dialog}}};

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
