#pragma once

#include "platform/modules/rc_lexer.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnel {

/// Hands out the tokens of a script one by one, as the readers of statements want them. What is
/// not as expected is thrown as a ScriptFault.
class ScriptReader {
  public:
    /// `script` is valid UTF-8 and outlives the reader and its tokens.
    explicit ScriptReader(std::string_view script)
        : script_(script), lexer_(script), current_(lexer_.next()) {}

    const Token& peek() const { return current_; }

    Token take();

    /// Takes the keyword or symbol `word` if it comes next.
    bool take_if(std::string_view word);

    void expect(std::string_view word);

    /// Takes a number; `what` names it in the fault.
    DWORD expect_number(std::string_view what);

    /// Takes a text and gives the characters it stands for.
    std::string expect_text();

    [[noreturn]] void fail_expected(std::string_view what) const;

    std::string_view script() const { return script_; }

    /// Where the next token begins in the script, in bytes.
    std::size_t offset() const {
        return static_cast<std::size_t>(current_.spelling.data() - script_.data());
    }

  private:
    std::string_view script_;
    Lexer lexer_;
    Token current_;
};

} // namespace tarnel
