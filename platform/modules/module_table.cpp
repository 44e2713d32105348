#include "platform/modules/module_table.h"

#include "platform/base/diagnostics.h"
#include "platform/base/never_destroyed.h"

#include <algorithm>
#include <utility>

namespace tarnel {

namespace {

std::optional<std::string> text_in(const ResourceScript& resources, WORD id) {
    const auto entry = resources.strings.find(id);
    const bool there = entry != resources.strings.end() && !entry->second.text.empty();
    return there ? std::optional(entry->second.text) : std::nullopt;
}

std::shared_ptr<const DialogTemplate> dialog_in(const ResourceScript& resources, WORD id) {
    const auto entry = resources.dialogs.find(id);
    return entry != resources.dialogs.end() ? entry->second.dialog : nullptr;
}

} // namespace

ModuleTable& ModuleTable::instance() {
    static NeverDestroyed<ModuleTable> table;
    return table.get();
}

HINSTANCE ModuleTable::add_embedded(ModulePlace place, std::string_view script) {
    const std::scoped_lock lock(modules_lock_);
    return add({.name = std::move(place.name),
                .unparsed = script,
                .resources = {},
                .file = std::move(place.file)});
}

std::optional<ModulePlace> ModuleTable::place_of(HINSTANCE module) {
    const std::scoped_lock lock(modules_lock_);
    const auto place = modules_.find(module);
    if (place == modules_.end() || place->second.references > 0) {
        return std::nullopt;
    }
    return ModulePlace{place->second.name, place->second.file};
}

void ModuleTable::remove(HINSTANCE module) {
    const std::scoped_lock lock(modules_lock_);
    modules_.erase(module);
}

HINSTANCE ModuleTable::add_reference(const std::string& path) {
    const std::scoped_lock lock(modules_lock_);
    return count_library(path);
}

HINSTANCE ModuleTable::add_library(const std::string& path, ResourceScript resources) {
    const std::scoped_lock lock(modules_lock_);
    if (const HINSTANCE present = count_library(path)) {
        return present;
    }
    return add({.name = path, .unparsed = {}, .resources = std::move(resources), .references = 1});
}

bool ModuleTable::release(HINSTANCE library) {
    const std::scoped_lock lock(modules_lock_);
    const auto place = modules_.find(library);
    if (place == modules_.end() || place->second.references == 0) {
        return false;
    }
    if (--place->second.references == 0) {
        modules_.erase(place);
    }
    return true;
}

void ModuleTable::add_extension(CDynLinkLibrary* library) {
    const std::scoped_lock lock(modules_lock_);
    chain_.emplace_back(library);
}

void ModuleTable::remove_extensions(HINSTANCE module, bool all) {
    const std::scoped_lock lock(modules_lock_);
    std::erase_if(chain_, [=](const auto& library) { return all || library->m_hModule == module; });
}

std::optional<std::string> ModuleTable::find_string(HINSTANCE module, UINT id, Search search) {
    return find(module, id, search, text_in);
}

std::shared_ptr<const DialogTemplate> ModuleTable::find_dialog(HINSTANCE module, UINT id,
                                                               Search search) {
    return find(module, id, search, dialog_in);
}

template <typename Found>
Found ModuleTable::find(HINSTANCE module, UINT id, Search search,
                        Found (*look)(const ResourceScript& resources, WORD id)) {
    Reports reports;
    Found found{};
    const auto look_in = [&](HINSTANCE place) {
        const ResourceScript* const resources = resources_of(place, reports);
        if (resources && id <= 0xFFFF) {
            found = look(*resources, static_cast<WORD>(id));
        }
    };
    {
        const std::scoped_lock lock(modules_lock_);
        look_in(module);
        auto library = chain_.rbegin();
        for (; search == Search::WithExtensions && !found && library != chain_.rend(); ++library) {
            if (!(*library)->m_bSystem) {
                look_in((*library)->m_hResource);
            }
        }
    }
    std::for_each(reports.begin(), reports.end(), report);
    return found;
}

HINSTANCE ModuleTable::add(Module module) {
    const auto handle = reinterpret_cast<HINSTANCE>(++last_handle_);
    modules_.emplace(handle, std::move(module));
    return handle;
}

/// Counts the loaded library of `path`, if there is one.
HINSTANCE ModuleTable::count_library(const std::string& path) {
    const auto place = std::find_if(modules_.begin(), modules_.end(), [&](const auto& entry) {
        return entry.second.references > 0 && entry.second.name == path;
    });
    if (place == modules_.end()) {
        return nullptr;
    }
    ++place->second.references;
    return place->first;
}

const ResourceScript* ModuleTable::resources_of(HINSTANCE module, Reports& reports) {
    const auto place = modules_.find(module);
    if (place == modules_.end()) {
        return nullptr;
    }
    auto& [name, unparsed, resources, references, file] = place->second;
    if (unparsed) {
        auto parsed = parse_resource_script(*std::exchange(unparsed, std::nullopt));
        if (const auto* error = std::get_if<ScriptError>(&parsed)) {
            reports.push_back(report_line(name, *error));
        } else {
            resources = std::get<ResourceScript>(std::move(parsed));
        }
    }
    return &resources;
}

} // namespace tarnel
