#include "platform/companions/resource_finder.h"

#include "platform/modules/language.h"
#include "platform/modules/module_table.h"

#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

namespace tarnel {

namespace {

/// The folder with the folders of the languages, empty when there is none. Three levels serve a
/// build tree and an installation below any prefix, `lib/<architecture>` included.
std::string language_folder(const ModulePlace& place) {
    if (const char* folder = std::getenv("TARNEL_RESOURCE_DIR"); folder && *folder) {
        return folder;
    }
    std::string level = place.file.parent_path().string();
    for (int levels = 0; levels < 3; ++levels) {
        level += "/.."; // the system's own way up, which knows where links lead
        std::string folder = level + "/share/" + place.name;
        std::error_code error;
        if (std::filesystem::is_directory(folder, error)) {
            return folder;
        }
    }
    return {};
}

} // namespace

LanguageChoice language_choice(HINSTANCE module, const std::string& name) {
    const auto place = ModuleTable::instance().place_of(module);
    if (!place) {
        return {};
    }
    LanguageChoice choice{user_languages(), language_folder(*place), {}};
    const std::string file = (name.empty() ? place->name : name) + ".rc";
    for (const std::string& language : choice.wanted) {
        std::string script = choice.folder;
        script.append("/").append(language).append("/").append(file);
        std::error_code error;
        if (!choice.folder.empty() && std::filesystem::is_regular_file(script, error)) {
            choice.script = std::move(script);
            break;
        }
    }
    return choice;
}

bool find_resource_script(HINSTANCE module, const std::string& name, std::string& path) {
    std::string script = language_choice(module, name).script;
    if (script.empty()) {
        return false;
    }
    path = std::move(script);
    return true;
}

} // namespace tarnel
