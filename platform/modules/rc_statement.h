#pragma once

#include "platform/base/types.h"
#include "platform/modules/rc_reader.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tarnel {

// What the statements of a script have in common.

/// "line:column" of `at` in `script`, both from 1, columns in characters.
std::string place_of(std::string_view script, const char* at);

void read_language(ScriptReader& reader);

/// Takes memory options, LANGUAGE, CHARACTERISTICS and VERSION, as long as they follow. They say
/// nothing to this layer.
void skip_options(ScriptReader& reader);

/// Takes the BEGIN of a body, which may be a brace.
void expect_begin(ScriptReader& reader);

/// Takes the END of a body, or its brace, if it comes next.
bool take_end(ScriptReader& reader);

/// Takes the identifier of a resource; `kind` is "string", say, and `expected` names what can
/// stand here.
WORD expect_id(ScriptReader& reader, std::string_view kind, std::string_view expected);

[[noreturn]] void fail_known_id(std::string_view script, const char* at, std::string_view kind,
                                WORD id, std::size_t first);

/// Takes an identifier that none of `entries` has; these know the offset of theirs.
template <typename Entry>
WORD expect_new_id(ScriptReader& reader, const std::map<WORD, Entry>& entries,
                   std::string_view kind, std::string_view expected) {
    const char* const at = reader.peek().spelling.data();
    const WORD id = expect_id(reader, kind, expected);
    if (const auto known = entries.find(id); known != entries.end()) {
        fail_known_id(reader.script(), at, kind, id, known->second.offset);
    }
    return id;
}

} // namespace tarnel
