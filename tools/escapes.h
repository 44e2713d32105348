#pragma once

#include <string>
#include <string_view>

/// Turns \r, \n, \t, \\ and \xNN into the characters that they mean; fails with exit_bad_setting
/// for anything else behind a backslash.
std::string unescape(std::string_view text);
