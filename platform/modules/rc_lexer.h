#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace tarnel {

/// What is wrong in a script, and where in its text. Thrown by the lexer and all that stands on
/// it; parse_resource_script turns it into its result.
struct ScriptFault {
    const char* at;
    std::string what;
};

enum class TokenKind { Word, Number, Text, Symbol, End };

struct Token {
    TokenKind kind;
    std::string_view spelling; ///< as it stands in the script, a text with its quotes
    DWORD number = 0;

    /// Whether this is the keyword or symbol `word`, in any case.
    bool is(std::string_view word) const;
};

/// Cuts a script into tokens and drops blanks and comments. A number is decimal or, after 0x,
/// hexadecimal; a text may carry the prefix L, which says nothing new about UTF-8; every other
/// character is a symbol. Copies are cheap, so a copy serves to look ahead.
class Lexer {
  public:
    /// `script` is valid UTF-8 and outlives the lexer and its tokens.
    explicit Lexer(std::string_view script) : rest_(script) {}

    Token next();

  private:
    std::string_view cut(std::size_t length);
    void skip_blanks();
    Token word();
    Token number();
    Token text();

    std::string_view rest_;
};

/// The characters that a text token stands for: "" is one quote, \n \t \r \\ \" as in C.
std::string text_of(const Token& token);

} // namespace tarnel
