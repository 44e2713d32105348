#include "core/NumberConversion.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace {

bool is_white_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The exponent that a number is written with; one beyond every int counts as the last int.
int written_exponent(std::string_view number) {
    const std::size_t mark = number.find_first_of("eE");
    if (mark == number.npos) {
        return 0;
    }
    number.remove_prefix(mark + (number[mark + 1] == '+' ? 2 : 1));
    int exponent = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), exponent);
    if (result.ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<int>;
        return number.front() == '-' ? Limits::min() : Limits::max();
    }
    return exponent;
}

// Of a number that no double can hold: whether it is too large, not too small. Either way it is so
// far from 1 that the place of its first digit other than zero decides.
bool is_too_large(std::string_view number) {
    const std::size_t digits_end = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), digits_end);
    const std::size_t first = number.find_first_of("123456789");
    const auto place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    return place + written_exponent(number) > 0;
}

// A caller's buffer as it fills up.
class Output {
  public:
    Output(char* buffer, std::size_t room) : start_(buffer), end_(buffer), room_(room) {}

    void put(std::string_view text) {
        const std::size_t count = text.copy(end_, room_);
        end_ += count;
        room_ -= count;
    }

    void put(double number) {
        char text[317]; // the lowest double: sign, 309 digits, point, six decimals
        const auto fixed = std::chars_format::fixed;
        put({text, std::to_chars(text, std::end(text), number, fixed, 6).ptr});
    }

    void put(int number) {
        char text[11];
        put({text, std::to_chars(text, std::end(text), number).ptr});
    }

    // Closes the text; the result is its length.
    int close() {
        *end_ = '\0';
        return static_cast<int>(end_ - start_);
    }

  private:
    char* start_;
    char* end_;
    std::size_t room_; // without the closing zero
};

// Writes a format that knows one kind of number, `type` to the format and Number to C++.
template <typename Number>
int write(Output output, const char* format, char type, va_list arguments) {
    for (;;) {
        const std::size_t literal = std::strcspn(format, "%");
        output.put({format, literal});
        format += literal;
        if (*format == '\0' || *++format == '\0') {
            return output.close();
        }
        if (format[0] == 'l' && format[1] == type) {
            ++format;
        }
        if (*format == type) {
            // The analyzer does not see va_start through the call.
            output.put(va_arg(arguments, Number)); // NOLINT(clang-analyzer-valist.Uninitialized)
        } else {
            output.put({format, 1});
        }
        ++format;
    }
}

// "005" of 5 or -5: at least three digits.
void put_exponent(Output& output, int exponent) {
    const int size = std::abs(exponent);
    output.put(exponent < 0 ? "e-" : "e+");
    output.put(std::string_view("00").substr(0, size < 10 ? 2 : size < 100));
    output.put(size);
}

// `figures` with a point behind `whole` of them, or before them and a zero.
void put_fixed(Output& output, std::string_view figures, std::size_t whole) {
    output.put(whole ? figures.substr(0, whole) : "0");
    for (std::size_t i = figures.size(); i < whole; ++i) {
        output.put("0");
    }
    output.put(".");
    output.put(figures.substr(std::min(whole, figures.size())));
}

} // namespace

double locale_independent::atof(const char* text) {
    if (!text) {
        return 0;
    }
    while (is_white_space(*text)) {
        ++text;
    }
    const bool negative = *text == '-';
    if (negative || *text == '+') {
        ++text;
    }
    // Keeps from_chars from reading a second sign, or a word that means infinity.
    if (!is_digit(text[0]) && !(text[0] == '.' && is_digit(text[1]))) {
        return 0;
    }
    double number = 0;
    const auto [end, error] = std::from_chars(text, text + std::strlen(text), number);
    if (error == std::errc::result_out_of_range) {
        number = is_too_large({text, end}) ? HUGE_VAL : 0;
    }
    return negative ? -number : number;
}

int locale_independent::sprintf(char* buffer, const char* format, ...) {
    constexpr auto unlimited = std::numeric_limits<std::size_t>::max();
    va_list arguments;
    va_start(arguments, format);
    const int written = write<double>(Output(buffer, unlimited), format, 'f', arguments);
    va_end(arguments);
    return written;
}

int locale_independent::wsprintfA(char* buffer, const char* format, ...) {
    constexpr std::size_t longest = 1023;
    va_list arguments;
    va_start(arguments, format);
    const int written = write<int>(Output(buffer, longest), format, 'd', arguments);
    va_end(arguments);
    return written;
}

char* locale_independent::_gcvt(double value, int digits, char* buffer) {
    char text[32];
    const auto format = std::chars_format::scientific;
    const auto end = std::to_chars(text, std::end(text), value, format, digits - 1).ptr;
    std::string_view number(text, static_cast<std::size_t>(end - text));
    Output output(buffer, std::numeric_limits<std::size_t>::max());
    if (!std::isfinite(value)) {
        output.put(number);
        output.close();
        return buffer;
    }
    if (number.front() == '-') {
        output.put("-");
        number.remove_prefix(1);
    }
    const int exponent = written_exponent(number);
    std::string figures(number.substr(0, number.find('e')));
    if (digits > 1) {
        figures.erase(1, 1); // the point
    }
    figures.resize(std::max<std::size_t>(figures.find_last_not_of('0') + 1, 1));
    const bool fixed = exponent >= -1 && exponent < digits;
    put_fixed(output, figures, fixed ? static_cast<std::size_t>(exponent + 1) : 1);
    if (!fixed) {
        put_exponent(output, exponent);
    }
    output.close();
    return buffer;
}
