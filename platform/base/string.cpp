#include "platform/base/string.h"

#include <charconv>
#include <cstdarg>
#include <utility>

namespace {

void append(std::string& text, int number) {
    char digits[11];
    text.append(digits, std::to_chars(digits, std::end(digits), number).ptr);
}

void append(std::string& text, LPCSTR inserted) {
    text += inserted ? inserted : "(null)";
}

} // namespace

void CString::Format(LPCSTR format, ...) {
    std::string text;
    va_list arguments;
    va_start(arguments, format);
    for (; *format; ++format) {
        const bool inserts = *format == '%' && format[1] != '\0';
        const char kind = inserts ? *++format : '\0';
        if (kind == 'd') {
            append(text, va_arg(arguments, int));
        } else if (kind == 's') {
            append(text, va_arg(arguments, LPCSTR));
        } else {
            text += *format;
        }
    }
    va_end(arguments);
    text_ = std::move(text);
}
