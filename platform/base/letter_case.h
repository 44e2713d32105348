#pragma once

#include <algorithm>
#include <string_view>

namespace tarnel {

/// The character with A to Z made small; whatever is not ASCII stays, and sorts behind it.
constexpr unsigned char small_letter(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

constexpr bool same_but_for_case(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, small_letter, small_letter);
}

constexpr bool before_but_for_case(std::string_view left, std::string_view right) {
    return std::ranges::lexicographical_compare(left, right, {}, small_letter, small_letter);
}

} // namespace tarnel
