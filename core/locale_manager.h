#pragma once

#include "core/resource_manager.h"
#include "platform/companions/locale_manager_base.h"

#include <string>

/// The library's locale manager: keeps the resource library of the user's language loaded. One
/// static object, complete before the entry point attaches it. Without a lock: it changes on the
/// application's user-interface thread, and is read there.
class lmLocaleManagerMFC final : public lmLocaleManagerBase, public lmResourceManager {
  public:
    lmLocaleManagerMFC() = default;
    ~lmLocaleManagerMFC() override;

    /// Loads the resource library that is found now, in place of another that was loaded before.
    void reload_resource_module() override;

    HINSTANCE get_resource_handle() override;

  private:
    void free_resource_module();

    HINSTANCE resource_module_ = nullptr; ///< null when none is loaded
    std::string resource_name_;           ///< empty: the library's own name
    std::string resource_path_;           ///< of the resource library loaded last
};

namespace tarnel {

/// For the entry point alone; all else goes through resource_manager.
extern lmLocaleManagerMFC locale_manager;

} // namespace tarnel
