#include "platform/modules/language.h"

#include <algorithm>
#include <cstdlib>

namespace tarnel {

namespace {

constexpr std::string_view built_in_language = "en";

constexpr std::string_view name_characters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                             "abcdefghijklmnopqrstuvwxyz"
                                             "0123456789_-@";

/// The parts of a locale's name "de_AT.UTF-8@euro". Its encoding says nothing here.
struct LocaleName {
    explicit LocaleName(std::string_view name)
        : language(cut(name, "_.@")), territory(cut(name, ".@")) {
        cut(name, "@");
        modifier = name;
    }

    bool is_c() const { return language == "C" || language == "POSIX"; }

    /// Cuts off the front of `name`, up to the first of `marks`.
    static std::string_view cut(std::string_view& name, std::string_view marks) {
        const std::string_view front = name.substr(0, name.find_first_of(marks));
        name.remove_prefix(front.size());
        return front;
    }

    std::string_view language;
    std::string_view territory; ///< with its underline
    std::string_view modifier;  ///< with its at sign
};

void add(std::vector<std::string>& list, std::string name) {
    if (std::find(list.begin(), list.end(), name) == list.end()) {
        list.push_back(std::move(name));
    }
}

void add_candidates(std::vector<std::string>& list, const LocaleName& name) {
    const std::string language(name.language);
    const std::string full = language + std::string(name.territory);
    const std::string modifier(name.modifier);
    // A name becomes part of a path: nothing in it may lead elsewhere.
    const bool fit = (full + modifier).find_first_not_of(name_characters) == std::string::npos;
    if (language.empty() || !fit) {
        return;
    }
    for (const std::string& candidate : {full + modifier, language + modifier, full, language}) {
        add(list, candidate);
    }
}

std::string_view locale_of(const LanguageSettings& settings) {
    for (const std::string_view locale : {settings.lc_all, settings.lc_messages, settings.lang}) {
        if (!locale.empty()) {
            return locale;
        }
    }
    return "C";
}

std::string_view environment(const char* name) {
    const char* const text = std::getenv(name);
    return text ? text : "";
}

} // namespace

std::vector<std::string> languages(const LanguageSettings& settings) {
    const std::string_view locale = locale_of(settings);
    if (LocaleName(locale).is_c()) {
        return {};
    }
    std::string_view wanted = settings.language.empty() ? locale : settings.language;
    std::vector<std::string> list;
    while (!wanted.empty()) {
        const LocaleName name(LocaleName::cut(wanted, ":"));
        if (name.is_c()) {
            break;
        }
        add_candidates(list, name);
        if (name.language == built_in_language) {
            break;
        }
        wanted.remove_prefix(std::min<std::size_t>(wanted.size(), 1));
    }
    return list;
}

std::vector<std::string> user_languages() {
    return languages({environment("LANGUAGE"), environment("LC_ALL"), environment("LC_MESSAGES"),
                      environment("LANG")});
}

} // namespace tarnel
