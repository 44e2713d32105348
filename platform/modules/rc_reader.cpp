#include "platform/modules/rc_reader.h"

#include "platform/modules/utf8.h"

#include <utility>

namespace tarnel {

namespace {

std::string quoted(std::string_view word) {
    return "'" + std::string(word) + "'";
}

/// How a fault names the token that it found.
std::string shown(const Token& token) {
    if (token.kind == TokenKind::End) {
        return "the end of the script";
    }
    const std::string_view front = token.spelling.substr(0, 40);
    return quoted(front.substr(0, text_prefix(front))); // no half character at its end
}

} // namespace

Token ScriptReader::take() {
    return std::exchange(current_, lexer_.next());
}

bool ScriptReader::take_if(std::string_view word) {
    const bool found = current_.is(word);
    if (found) {
        take();
    }
    return found;
}

void ScriptReader::expect(std::string_view word) {
    if (!take_if(word)) {
        fail_expected(quoted(word));
    }
}

DWORD ScriptReader::expect_number(std::string_view what) {
    if (current_.kind != TokenKind::Number) {
        fail_expected(what);
    }
    return take().number;
}

std::string ScriptReader::expect_text() {
    if (current_.kind != TokenKind::Text) {
        fail_expected("a string");
    }
    return text_of(take());
}

void ScriptReader::fail_expected(std::string_view what) const {
    throw ScriptFault{current_.spelling.data(),
                      "expected " + std::string(what) + ", found " + shown(current_)};
}

} // namespace tarnel
