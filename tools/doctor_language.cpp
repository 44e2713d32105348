#include "core/library_language.h"
#include "platform/modules/module.h"
#include "tools/doctor.h"

#include <fmt/format.h>
#include <locale.h>

#include <cstdlib>
#include <filesystem>

namespace {

constexpr const char* variables[] = {"LC_ALL",     "LC_CTYPE",    "LC_NUMERIC",  "LC_TIME",
                                     "LC_COLLATE", "LC_MONETARY", "LC_MESSAGES", "LANG"};

/// Whether the system has this locale, or for "" those of the environment; changes none.
bool system_has(const char* name) {
    const locale_t locale = ::newlocale(LC_ALL_MASK, name, nullptr);
    if (locale) {
        ::freelocale(locale);
    }
    return locale != nullptr;
}

/// For programs that ask the system how to write.
void examine_locale(Diagnosis& diagnosis) {
    if (system_has("")) {
        return;
    }
    for (const char* variable : variables) {
        const char* const locale = std::getenv(variable);
        if (locale && !system_has(locale)) {
            diagnosis.add(Level::warning,
                          fmt::format("The system does not have the locale {}, which {} asks for: "
                                      "programs fall back to C.",
                                      locale, variable),
                          "sudo dpkg-reconfigure locales, and choose it; or sudo locale-gen " +
                              shell_word(locale));
            return;
        }
    }
}

/// Whether the script is a whole one; a damaged one has been reported when the library was loaded.
bool is_whole(const std::string& script) {
    const HMODULE library = LoadLibraryA(script.c_str());
    return library && FreeLibrary(library);
}

Finding examine_texts(const tarnel::LanguageChoice& choice) {
    std::error_code error;
    const std::string language = choice.wanted.empty() ? "en" : choice.wanted.front();
    if (!choice.script.empty()) {
        return is_whole(choice.script)
                   ? Finding{Level::ok,
                             "Dialogs speak your language: " + clean(choice.script) + ".",
                             {}}
                   : Finding{Level::problem,
                             choice.script + " is damaged, so dialogs speak English.",
                             "The first line of standard error says where; or install the library "
                             "anew"};
    }
    if (language.starts_with("en")) {
        return {Level::ok, "Dialogs speak English.", {}};
    }
    if (!std::filesystem::is_directory(choice.folder, error)) {
        return {Level::problem,
                fmt::format("The folder of the languages{} is missing: dialogs speak English.",
                            choice.folder.empty() ? "" : ", " + choice.folder + ","),
                choice.folder.empty() ? "Install the library anew" : "unset TARNEL_RESOURCE_DIR"};
    }
    return {Level::warning,
            fmt::format("There are no texts for '{}' in {}: dialogs speak English.", language,
                        clean(choice.folder)),
            "export LANGUAGE=de, or another that is there"};
}

} // namespace

Diagnosis examine_language() {
    Diagnosis diagnosis;
    diagnosis.findings.push_back(examine_texts(tarnel::library_language()));
    examine_locale(diagnosis);
    return diagnosis;
}
