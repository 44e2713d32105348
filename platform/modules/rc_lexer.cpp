#include "platform/modules/rc_lexer.h"

#include "platform/base/letter_case.h"

#include <algorithm>
#include <charconv>

namespace tarnel {

namespace {

constexpr bool is_blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Letters beyond ASCII count, so that a stray word of another language is shown whole.
constexpr bool is_word(char c) {
    const unsigned char letter = small_letter(c);
    return (letter >= 'a' && letter <= 'z') || letter >= 0x80 || is_digit(c) || c == '_';
}

/// The character that `\c` stands for, 0 when it stands for none.
constexpr char escaped(char c) {
    switch (c) {
    case 'n':
        return '\n';
    case 't':
        return '\t';
    case 'r':
        return '\r';
    case '\\':
    case '"':
        return c;
    default:
        return 0;
    }
}

} // namespace

bool Token::is(std::string_view word) const {
    return same_but_for_case(spelling, word);
}

Token Lexer::next() {
    skip_blanks();
    if (rest_.empty()) {
        return {TokenKind::End, rest_};
    }
    if (rest_.front() == '"' || rest_.starts_with("L\"") || rest_.starts_with("l\"")) {
        return text();
    }
    if (is_digit(rest_.front())) {
        return number();
    }
    return is_word(rest_.front()) ? word() : Token{TokenKind::Symbol, cut(1)};
}

std::string_view Lexer::cut(std::size_t length) {
    const std::string_view front = rest_.substr(0, length);
    rest_.remove_prefix(front.size());
    return front;
}

void Lexer::skip_blanks() {
    for (;;) {
        if (rest_.starts_with("//")) {
            cut(rest_.find('\n'));
        } else if (rest_.starts_with("/*")) {
            const std::size_t end = rest_.find("*/", 2);
            if (end == std::string_view::npos) {
                throw ScriptFault{rest_.data(), "comment is not closed"};
            }
            cut(end + 2);
        } else if (!rest_.empty() && is_blank(rest_.front())) {
            cut(1);
        } else {
            return;
        }
    }
}

Token Lexer::word() {
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), is_word);
    return {TokenKind::Word, cut(static_cast<std::size_t>(end - rest_.begin()))};
}

Token Lexer::number() {
    Token token{TokenKind::Number, word().spelling};
    const bool hexadecimal = token.spelling.starts_with("0x") || token.spelling.starts_with("0X");
    const std::string_view digits = token.spelling.substr(hexadecimal ? 2 : 0);
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] =
        std::from_chars(digits.data(), end, token.number, hexadecimal ? 16 : 10);
    if (error == std::errc::result_out_of_range) {
        throw ScriptFault{token.spelling.data(), "number does not fit into 32 bits"};
    }
    if (error != std::errc() || stop != end) {
        throw ScriptFault{token.spelling.data(), "number is not well formed"};
    }
    return token;
}

Token Lexer::text() {
    for (std::size_t end = rest_.find('"') + 1;; ++end) {
        end = rest_.find_first_of("\"\\\r\n", end);
        if (end == std::string_view::npos) {
            throw ScriptFault{rest_.data(), "string is not closed"};
        }
        const std::string_view pair = rest_.substr(end, 2);
        if (pair == "\"\"" || pair == "\\\"" || pair == "\\\\") {
            ++end;
        } else if (pair.front() == '"') {
            return {TokenKind::Text, cut(end + 1)};
        } else if (pair.front() != '\\') {
            throw ScriptFault{rest_.data(), "line break inside a string"};
        }
    }
}

std::string text_of(const Token& token) {
    const std::size_t open = token.spelling.find('"');
    const std::string_view raw = token.spelling.substr(open + 1, token.spelling.size() - open - 2);
    std::string text;
    text.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '\\') {
            const char* const backslash = &raw[i];
            const char c = escaped(raw[++i]);
            if (c == 0) {
                throw ScriptFault{backslash,
                                  "unknown escape, only \\n \\t \\r \\\\ \\\" are known"};
            }
            text += c;
        } else {
            text += raw[i];
            i += raw[i] == '"'; // past the second of a pair
        }
    }
    return text;
}

} // namespace tarnel
