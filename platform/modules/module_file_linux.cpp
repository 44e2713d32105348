#include "platform/modules/module_file.h"

#include <dlfcn.h>
#include <link.h>

#include <system_error>

namespace tarnel {

std::filesystem::path file_of_code(const void* code) {
    Dl_info info;
    void* entry = nullptr;
    if (!::dladdr1(code, &info, &entry, RTLD_DL_LINKMAP)) {
        return {};
    }
    // The loader does not name the executable, and names a library as it was asked for.
    const char* const name = static_cast<const link_map*>(entry)->l_name;
    std::error_code error;
    return *name ? std::filesystem::absolute(name, error)
                 : std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace tarnel
