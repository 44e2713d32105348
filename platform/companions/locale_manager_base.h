#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <string>

/// Base of a library's locale manager, which chooses the module that its dialogs and strings come
/// from. It keeps the module that it was attached to, and finds the resource script for the user's
/// language. All calls come from the application's user-interface thread, or from the thread that
/// loads or unloads the library.
class TARNEL_PLATFORM_API lmLocaleManagerBase {
  public:
    lmLocaleManagerBase();
    lmLocaleManagerBase(const lmLocaleManagerBase&) = delete;
    lmLocaleManagerBase& operator=(const lmLocaleManagerBase&) = delete;

    /// At the library's process attach, with its own module; chooses the resources.
    virtual void attach(HINSTANCE module);

    /// At the library's process detach.
    virtual void detach();

    virtual ~lmLocaleManagerBase();

    /// Called whenever the resources are to be chosen.
    virtual void reload_resource_module() = 0;

  protected:
    HINSTANCE attached_module() const { return attached_module_; }

    /// Whether there is a resource script `name` of `module` for one of the user's languages; its
    /// place in `path` if so. An empty name is the module's own. The languages are those of the
    /// environment now: LANGUAGE, LC_ALL, LC_MESSAGES, LANG. A script is
    /// `<language>/<name>.rc` in the folder that TARNEL_RESOURCE_DIR names, else in the nearest
    /// folder `share/<module's name>` beside the folder of the module's file or up to two levels
    /// above.
    static bool find_resource_dll(HINSTANCE module, const std::string& name, std::string& path);

  private:
    HINSTANCE attached_module_ = nullptr;
};

/// Loads the resource library at `path`: LoadLibraryA under the name that locale managers use.
TARNEL_PLATFORM_API HINSTANCE lm_load_library(const char* path);

/// Lets all attached locale managers choose their resources anew, after the application has changed
/// the language in its environment. On the application's user-interface thread, while no library
/// is being loaded or unloaded.
TARNEL_PLATFORM_API void lm_reload_resources();
