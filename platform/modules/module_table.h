#pragma once

#include "platform/base/types.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/rc_parser.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

constexpr std::uintptr_t executable_handle = 1;

/// The handle of the executable, a module without resources of its own.
inline HINSTANCE executable_module() {
    return reinterpret_cast<HINSTANCE>(executable_handle);
}

/// A module's name and the file that it is a part of.
struct ModulePlace {
    std::string name;
    std::filesystem::path file;
};

enum class Search { ThisModule, WithExtensions };

/// All modules of the process and the chain of extension libraries, behind one lock. The lock is
/// never held over a call to the application's code: what has to be reported waits until it is
/// released. An unknown handle is a module that holds nothing.
class ModuleTable {
  public:
    static ModuleTable& instance();

    /// A module with an embedded script, which stays valid until the module is removed.
    HINSTANCE add_embedded(ModulePlace place, std::string_view script);

    /// What is known of a module of add_embedded; nothing of any other.
    std::optional<ModulePlace> place_of(HINSTANCE module);

    void remove(HINSTANCE module);

    /// Counts the library of `path` once more; null when it is not loaded.
    HINSTANCE add_reference(const std::string& path);

    /// Enters the library of `path`, unless another thread has just done so.
    HINSTANCE add_library(const std::string& path, ResourceScript resources);

    /// Takes back one reference; false when `library` is not a library of add_library.
    bool release(HINSTANCE library);

    /// Takes over `library` as the new head of the chain.
    void add_extension(CDynLinkLibrary* library);

    /// Deletes the entries of `module`, or all of them.
    void remove_extensions(HINSTANCE module, bool all);

    // Look-ups go to `module` and, when asked, to the non-system libraries of the chain after it.

    /// The first text of string `id` that is there and not empty.
    std::optional<std::string> find_string(HINSTANCE module, UINT id, Search search);

    /// The first dialog template `id`, null when there is none.
    std::shared_ptr<const DialogTemplate> find_dialog(HINSTANCE module, UINT id, Search search);

  private:
    struct Module {
        std::string name; // of a library, its path
        std::optional<std::string_view> unparsed;
        ResourceScript resources;
        int references = 0;              // 0 for a module with an embedded script
        std::filesystem::path file = {}; // empty for a library
    };

    using Reports = std::vector<std::string>;

    HINSTANCE add(Module module);
    HINSTANCE count_library(const std::string& path);
    const ResourceScript* resources_of(HINSTANCE module, Reports& reports);

    template <typename Found>
    Found find(HINSTANCE module, UINT id, Search search,
               Found (*look)(const ResourceScript& resources, WORD id));

    std::mutex modules_lock_;
    std::map<HINSTANCE, Module> modules_;
    std::vector<std::unique_ptr<CDynLinkLibrary>> chain_; // its head at the end
    std::uintptr_t last_handle_ = executable_handle;
};

} // namespace tarnel
