#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

/// The environment's texts that say which language the user wants, empty where not set.
struct LanguageSettings {
    std::string_view language; ///< LANGUAGE, a list with colons
    std::string_view lc_all;
    std::string_view lc_messages;
    std::string_view lang;
};

/// The languages to look for, the most wanted first, each with what comes near it: "de_AT" and
/// then "de". They are read as gettext reads them: LANGUAGE unless the locale is C, else the
/// locale. The list ends where the texts that are built in serve, at English and at C. Each name
/// is fit to be a folder's.
std::vector<std::string> languages(const LanguageSettings& settings);

/// The same, of this process's environment as it is now.
std::vector<std::string> user_languages();

} // namespace tarnel
