// Numbers from outside: reading one must agree, bit by bit, with the C runtime in its "C" locale.

#include "core/NumberConversion.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// What only the runtime reads: words for infinity and hexadecimal numbers.
bool only_for_runtime(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == text.npos) {
        return false;
    }
    const std::size_t digits = start + (text[start] == '+' || text[start] == '-');
    const char first = text.c_str()[digits];
    return first == 'i' || first == 'I' || first == 'n' || first == 'N' ||
           (first == '0' && (text[digits + 1] | 0x20) == 'x');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const double value = locale_independent::atof(text.c_str());
    const double expected = std::strtod(text.c_str(), nullptr);
    if (!only_for_runtime(text) &&
        std::bit_cast<std::uint64_t>(value) != std::bit_cast<std::uint64_t>(expected)) {
        std::fprintf(stderr, "\"%s\" reads as %.17g, not %.17g\n", text.c_str(), value, expected);
        std::abort();
    }
    return 0;
}
