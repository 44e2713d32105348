#include "platform/desktop/window_text.h"

#include <algorithm>

namespace tarnel {
namespace {

constexpr char escape = '\x1B';

bool is_upper_half(char c) {
    return static_cast<unsigned char>(c) >= 0x80;
}

void append_latin1(std::string& text, char c) {
    if (is_upper_half(c)) {
        text += static_cast<char>(0xC0 | static_cast<unsigned char>(c) >> 6);
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += c;
    }
}

/// Reads a compound text: each half of the code table has its character set.
class CompoundText {
  public:
    explicit CompoundText(std::string_view text) : rest_(text) {}

    std::string utf8() {
        while (!rest_.empty()) {
            if (rest_.front() == escape) {
                take_escape();
            } else {
                take_character();
            }
        }
        return std::move(text_);
    }

  private:
    /// Intermediate characters, and a final one.
    void take_escape() {
        const auto* const final_character =
            std::find_if(rest_.begin() + 1, rest_.end(), [](char c) { return c < ' ' || c > '/'; });
        const auto length = static_cast<std::size_t>(final_character - rest_.begin());
        const std::string_view sequence = rest_.substr(1, length);
        rest_.remove_prefix(std::min(length + 1, rest_.size()));

        if (sequence == "%G") {
            take_utf8();
        } else if (sequence.starts_with("(") || sequence.starts_with("$(")) {
            lower_is_ascii_ = sequence == "(B";
        } else if (sequence.starts_with("-") || sequence.starts_with(")") ||
                   sequence.starts_with("$)")) {
            upper_is_latin1_ = sequence == "-A";
        }
    }

    void take_utf8() {
        const std::size_t end = std::min(rest_.find(escape), rest_.size());
        text_ += rest_.substr(0, end);
        rest_.remove_prefix(end);
    }

    void take_character() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        append_latin1(text_, (is_upper_half(c) ? upper_is_latin1_ : lower_is_ascii_) ? c : '?');
    }

    std::string_view rest_;
    std::string text_;
    bool lower_is_ascii_ = true;
    bool upper_is_latin1_ = true;
};

} // namespace

std::string utf8_from_compound_text(std::string_view text) {
    return CompoundText(text).utf8();
}

int copy_text(std::string_view text, char* buffer, int size) {
    if (size <= 0) {
        return 0;
    }
    std::size_t count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    while (count > 0 && count < text.size() && (text[count] & 0xC0) == 0x80) {
        --count;
    }
    *std::copy_n(text.begin(), count, buffer) = '\0';
    return static_cast<int>(count);
}

} // namespace tarnel
